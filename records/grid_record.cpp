#include <tervik/records.h>

#include "records/holder.h"

using tervik::detail::holder_adopt;
using tervik::detail::holder_release;
using tervik::detail::holder_share;

double tervik_data4::undef = 9999.0;
double tervik_data3::undef = 9999.0;

namespace {

void copy_header(tervik_data4& to, const tervik_data4& from) {
  tervik::detail::copy_grid_header(to, from);
  to.contour_interval = from.contour_interval;
  to.contour_start = from.contour_start;
  to.contour_end = from.contour_end;
  to.geometry_override = from.geometry_override;
}

}  // namespace

tervik_data4::tervik_data4()
    : description{},
      valid_time{},
      level(0),
      lon_step(0),
      lat_step(0),
      first_lon(0),
      last_lon(0),
      first_lat(0),
      last_lat(0),
      nx(0),
      ny(0),
      contour_interval(0),
      contour_start(0),
      contour_end(0),
      geometry_override(0),
      values(nullptr) {}

tervik_data4::tervik_data4(const tervik_data4& other) : values(holder_share(other.values)) {
  copy_header(*this, other);
}

tervik_data4& tervik_data4::operator=(const tervik_data4& other) {
  if (this == &other) return *this;
  grid_holder* shared = holder_share(other.values);
  holder_release(values);
  values = shared;
  copy_header(*this, other);
  return *this;
}

tervik_data4::~tervik_data4() { holder_release(values); }

void tervik_data4::set_gridPtr(double* malloced) {
  grid_holder* fresh = holder_adopt(malloced);
  holder_release(values);
  values = fresh;
}

void data4copy(tervik_data4& to, const tervik_data4& from) {
  if (&to == &from) return;
  copy_header(to, from);
}
