#include <tervik/records.h>

#include "records/holder.h"

using tervik::detail::holder_adopt;
using tervik::detail::holder_release;
using tervik::detail::holder_share;

namespace {

void replace(grid_holder*& slot, double* malloced) {
  grid_holder* fresh = holder_adopt(malloced);
  holder_release(slot);
  slot = fresh;
}

}  // namespace

tervik_data11::tervik_data11()
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
      u_values(nullptr),
      v_values(nullptr) {}

tervik_data11::tervik_data11(const tervik_data11& other)
    : u_values(holder_share(other.u_values)), v_values(holder_share(other.v_values)) {
  tervik::detail::copy_grid_header(*this, other);
}

tervik_data11& tervik_data11::operator=(const tervik_data11& other) {
  if (this == &other) return *this;
  grid_holder* u = holder_share(other.u_values);
  grid_holder* v = holder_share(other.v_values);
  holder_release(u_values);
  holder_release(v_values);
  u_values = u;
  v_values = v;
  tervik::detail::copy_grid_header(*this, other);
  return *this;
}

tervik_data11::~tervik_data11() {
  holder_release(u_values);
  holder_release(v_values);
}

void tervik_data11::set_gridPtrU(double* malloced) { replace(u_values, malloced); }
void tervik_data11::set_gridPtrV(double* malloced) { replace(v_values, malloced); }
