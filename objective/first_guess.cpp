// The model first guess: which model file belongs to a station file, and its values on the
// analysis grid.

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "objective/driver_detail.h"

namespace tervik::detail {

namespace {

bool leap_year(int year) { return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0); }

int days_in_month(int year, int month) {
  static const int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && leap_year(year) ? 29 : kDays[month - 1];
}

// Two decimal digits at s, or -1.
int two_digits(const char* s) {
  if (!std::isdigit(static_cast<unsigned char>(s[0])) ||
      !std::isdigit(static_cast<unsigned char>(s[1])))
    return -1;
  return (s[0] - '0') * 10 + (s[1] - '0');
}

// Hours between the model run and the observation: the lead of the forecast that is valid
// at the observation hour in each model's schedule.
int lead_time(int hour, int model) {
  switch (hour) {
    case 2: case 14: return 18;
    case 5: case 17: return 9;
    case 8: case 20: return model == 2 ? 24 : 12;
    case 11: return 15;
    default: return 12;
  }
}

}  // namespace

bool model_file_name(const char* file_name, int model, int kind, std::string& path) {
  static const char* const kModels[4] = {"k402", "polarnav", "kiwan", "ORCA_QRT"};
  static const char* const kElements[3] = {"pressure", "height", "temper"};
  if (!file_name || model < 1 || model > 4 || kind < 0 || kind > 2) return false;
  const char* slash = std::strrchr(file_name, '\\');
  if (!slash) return false;
  const char* name = slash + 1;
  if (std::strlen(name) < 8) return false;
  int year = two_digits(name), month = two_digits(name + 2), day = two_digits(name + 4);
  int hour = two_digits(name + 6);
  year += 2000;  // two-digit years; only their leap years matter here
  if (month < 1 || month > 12 || day < 1 || day > days_in_month(year, month) || hour < 0 ||
      hour > 23)
    return false;
  const char* data = std::strstr(file_name, "data");
  if (!data) return false;
  if (kind != 0 && slash - file_name < 3) return false;

  // The run time: back by the lead time across days, months and years.
  const int lead = lead_time(hour, model);
  hour -= lead;
  while (hour < 0) {
    hour += 24;
    if (--day < 1) {
      if (--month < 1) {
        month = 12;
        --year;
      }
      day = days_in_month(year, month);
    }
  }
  char stamp[32];
  std::snprintf(stamp, sizeof stamp, "%02d%02d%02d%02d.%03d", year % 100, month, day, hour, lead);

  // Pieces are joined by backslashes, the separator the station path itself uses.
  path.assign(file_name, data + 4);
  path += '\\';
  path += kModels[model - 1];
  path += '\\';
  path += kElements[kind];
  if (kind != 0) {
    path += '\\';
    path.append(slash - 3, 3);  // the level directory of the station file
  }
  path += '\\';
  path += stamp;
  return true;
}

bool interpolate_model(const tervik_data4& m, int nx, int ny, double lon_min, double lat_min,
                       double step, double* out) {
  const double* v = m.data();
  const int mnx = m.nx;
  const int mny = m.ny;
  if (!v || mnx < 2 || mny < 2 || !std::isfinite(m.lon_step) || !std::isfinite(m.lat_step) ||
      m.lon_step == 0.0 || m.lat_step == 0.0)
    return false;
  const double undef = tervik_data4::undef;
  const double west = std::min(m.first_lon, m.first_lon + (mnx - 1) * m.lon_step);
  const double east = std::max(m.first_lon, m.first_lon + (mnx - 1) * m.lon_step);
  for (int j = 0; j < ny; ++j) {
    const double lat = lat_min + j * step;
    for (int i = 0; i < nx; ++i) {
      double lon = lon_min + i * step;
      if (lon < west && lon + 360.0 <= east)
        lon += 360.0;
      else if (lon > east && lon - 360.0 >= west)
        lon -= 360.0;
      // Outside the model grid the nearest border value is taken: the grid coordinates are
      // held on the grid, so the value is constant straight out from the edge.
      const double x = std::clamp((lon - m.first_lon) / m.lon_step, 0.0, mnx - 1.0);
      const double y = std::clamp((lat - m.first_lat) / m.lat_step, 0.0, mny - 1.0);
      if (!(x == x && y == y)) return false;
      const int i0 = std::min(static_cast<int>(x), mnx - 2);
      const int j0 = std::min(static_cast<int>(y), mny - 2);
      const double fx = x - i0;
      const double fy = y - j0;
      const size_t n = static_cast<size_t>(j0) * mnx + i0;
      const double c00 = v[n], c10 = v[n + 1], c01 = v[n + mnx], c11 = v[n + mnx + 1];
      double value;
      if (c00 != undef && c10 != undef && c01 != undef && c11 != undef) {
        const double a = c00 + (c10 - c00) * fx;
        const double b = c01 + (c11 - c01) * fx;
        value = a + (b - a) * fy;
      } else {
        // Missing corners drop out; the defined ones keep their bilinear weights.
        const double w[4] = {(1 - fx) * (1 - fy), fx * (1 - fy), (1 - fx) * fy, fx * fy};
        const double c[4] = {c00, c10, c01, c11};
        double sum = 0.0, weight = 0.0, plain = 0.0;
        int defined = 0;
        for (int k = 0; k < 4; ++k) {
          if (c[k] == undef) continue;
          sum += w[k] * c[k], weight += w[k];
          plain += c[k], ++defined;
        }
        if (defined == 0) return false;
        // On a missing point itself the defined corners all weigh 0: take their mean.
        value = weight > 0.0 ? sum / weight : plain / defined;
      }
      out[static_cast<size_t>(j) * nx + i] = value;
    }
  }
  return true;
}

}  // namespace tervik::detail
