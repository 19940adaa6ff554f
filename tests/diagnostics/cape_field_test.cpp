// CAPE of every column of a stack of pressure-level grids.

#include <cfloat>
#include <vector>

#include <gtest/gtest.h>

#include <tervik/diagnostics.h>
#include <tervik/sounding.h>

namespace {

constexpr double kU = 9999.0;

// A moist, conditionally unstable late-spring profile from the ground up.
const std::vector<double> kP = {1000, 925, 850, 700, 500, 400, 300, 250, 200};
const std::vector<double> kT = {30, 24, 19, 8, -10, -20, -33, -42, -52};
const std::vector<double> kTd = {22, 18, 14, 0, -20, -30, -45, -55, -65};

// The sounding of one column, ground first, the way a station's profile is stored.
double column_cape(const std::vector<double>& t, const std::vector<double>& td) {
  std::vector<tag_tlogp_layer> layers(kP.size());
  for (std::size_t z = 0; z < kP.size(); ++z) {
    layers[z].p = kP[z];
    layers[z].t = t[z];
    layers[z].td = td[z];
    layers[z].valid = t[z] != kU && td[z] != kU;
  }
  return CAPE(layers.data(), static_cast<int>(layers.size()));
}

// Level grids of nx = 3 columns: the profile, the profile with its 700 hPa dew point
// missing and 2 K cooler at the ground, and a column with no temperatures at all.
struct Stack {
  std::vector<std::vector<double>> t, td;
  std::vector<const double*> t_ptr, td_ptr;
  std::vector<double> p;

  explicit Stack(bool top_down) {
    const std::size_t nz = kP.size();
    for (std::size_t level = 0; level < nz; ++level) {
      const std::size_t z = top_down ? nz - 1 - level : level;
      t.push_back({kT[z], z == 0 ? kT[z] - 2 : kT[z], kU});
      td.push_back({kTd[z], kP[z] == 700 ? kU : kTd[z], kTd[z]});
      p.push_back(kP[z]);
    }
    for (std::size_t z = 0; z < nz; ++z) {
      t_ptr.push_back(t[z].data());
      td_ptr.push_back(td[z].data());
    }
  }
};

TEST(CapeField, EachPointIsTheCapeOfItsColumnWhicheverWayTheLevelsAreStacked) {
  std::vector<double> t2 = kT, td2 = kTd;
  t2[0] -= 2;
  td2[3] = kU;
  const double want0 = column_cape(kT, kTd), want1 = column_cape(t2, td2);
  ASSERT_GT(want0, 100.0);
  ASSERT_NE(want0, kU);
  ASSERT_NE(want1, kU);
  ASSERT_NE(want0, want1);  // the second column's changes matter

  for (bool top_down : {false, true}) {
    const Stack s(top_down);
    std::vector<double> out(3);
    double lo, hi;
    ASSERT_EQ(compute_field_cape(out.data(), &lo, &hi, s.t_ptr.data(), s.td_ptr.data(),
                                 s.p.data(), static_cast<int>(s.p.size()), 3, 1, 0.5), 0);
    EXPECT_EQ(out[0], want0 * 0.5) << top_down;
    EXPECT_EQ(out[1], want1 * 0.5) << top_down;
    // no valid level: undefined, unscaled, and out of the range
    EXPECT_EQ(out[2], kU) << top_down;
    EXPECT_EQ(lo, std::min(out[0], out[1])) << top_down;
    EXPECT_EQ(hi, std::max(out[0], out[1])) << top_down;
  }

  // a caller's double** of level grids is accepted as it is
  Stack s(false);
  std::vector<double*> t_levels, td_levels;
  for (std::size_t z = 0; z < s.p.size(); ++z) {
    t_levels.push_back(s.t[z].data());
    td_levels.push_back(s.td[z].data());
  }
  double** t_raw = t_levels.data();
  double** td_raw = td_levels.data();
  std::vector<double> out(3);
  double lo, hi;
  ASSERT_EQ(compute_field_cape(out.data(), &lo, &hi, t_raw, td_raw, s.p.data(),
                               static_cast<int>(s.p.size()), 3, 1, 1.0), 0);
  EXPECT_EQ(out[0], want0);
}

TEST(CapeField, FailureCodes) {
  const Stack s(false);
  std::vector<double> out(3, -1.0);
  double lo = 0, hi = 0;
  const int nz = static_cast<int>(s.p.size());
  EXPECT_EQ(compute_field_cape(nullptr, &lo, &hi, s.t_ptr.data(), s.td_ptr.data(), s.p.data(),
                               nz, 3, 1, 1.0), 1);
  EXPECT_EQ(compute_field_cape(out.data(), &lo, &hi, s.t_ptr.data(), s.td_ptr.data(), s.p.data(),
                               0, 3, 1, 1.0), 1);
  std::vector<const double*> holed = s.td_ptr;
  holed[4] = nullptr;
  EXPECT_EQ(compute_field_cape(out.data(), &lo, &hi, s.t_ptr.data(), holed.data(), s.p.data(), nz,
                               3, 1, 1.0), 1);
  EXPECT_EQ(compute_field_cape(out.data(), &lo, &hi, s.t_ptr.data(), s.td_ptr.data(), nullptr, nz,
                               3, 1, 1.0), 1);
  EXPECT_EQ(out[0], -1.0);
  EXPECT_EQ(compute_field_cape(out.data(), &lo, &hi, nullptr, nullptr, nullptr, 0, 0, 0, 1.0), 0);
  EXPECT_EQ(lo, DBL_MAX);
  EXPECT_EQ(hi, -DBL_MAX);
}

}  // namespace
