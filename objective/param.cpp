// Text form of the objective-analysis settings.

#include <tervik/objective.h>

std::ifstream& operator>>(std::ifstream& in, obj_analysis_param& p) {
  obj_analysis_param read = p;
  int enhance = 0;
  in >> read.lon_min >> read.lon_max >> read.lat_min >> read.lat_max >> read.grid_step >>
      read.method >> read.first_guess_model >> enhance;
  if (!in) return in;  // a short or malformed text leaves the caller's settings alone
  read.enhance_extrema = enhance == 1;
  p = read;
  return in;
}

std::ofstream& operator<<(std::ofstream& out, const obj_analysis_param& p) {
  out << p.lon_min << ' ' << p.lon_max << ' ' << p.lat_min << ' ' << p.lat_max << ' '
      << p.grid_step << ' ' << p.method << ' ' << p.first_guess_model << ' '
      << (p.enhance_extrema ? 1 : 0);
  return out;
}
