#include <cstdlib>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>
#include <tervik/records.h>

namespace {

double* filled(int n, double v) {
  double* a = static_cast<double*>(std::malloc(sizeof(double) * n));
  for (int k = 0; k < n; ++k) a[k] = v + k;
  return a;
}

tervik_data4 small_grid() {
  tervik_data4 g;
  std::strcpy(g.description, "500hPa Height");
  g.nx = 3;
  g.ny = 2;
  g.level = 500;
  g.lon_step = 1.0;
  g.lat_step = -1.0;
  g.set_gridPtr(filled(6, 10.0));
  return g;
}

}  // namespace

TEST(GridRecord, StartsWithoutValuesAndWithTheMissingMarker) {
  tervik_data4 g;
  EXPECT_EQ(g.values, nullptr);
  EXPECT_EQ(g.data(), nullptr);
  EXPECT_EQ(tervik_data4::undef, 9999.0);
  EXPECT_EQ(tervik_data3::undef, 9999.0);
}

TEST(GridRecord, CopiesShareOneArrayAndCountOwners) {
  tervik_data4 a = small_grid();
  {
    tervik_data4 b(a);
    tervik_data4 c;
    c = b;
    EXPECT_EQ(a.values, b.values);
    EXPECT_EQ(a.values, c.values);
    EXPECT_EQ(a.values->owners, 3);
    EXPECT_STREQ(c.description, "500hPa Height");
  }
  EXPECT_EQ(a.values->owners, 1);
  EXPECT_EQ(a.data()[5], 15.0);
}

TEST(GridRecord, SequencesOfRecordsKeepTheirArrays) {
  std::vector<tervik_data4> members;
  for (int k = 0; k < 20; ++k) members.push_back(small_grid());  // reallocation copies
  for (const auto& m : members) {
    ASSERT_NE(m.values, nullptr);
    EXPECT_EQ(m.values->owners, 1);
    EXPECT_EQ(m.data()[0], 10.0);
  }
}

TEST(GridRecord, SelfAssignmentKeepsTheArray) {
  tervik_data4 a = small_grid();
  tervik_data4& alias = a;
  a = alias;
  ASSERT_NE(a.values, nullptr);
  EXPECT_EQ(a.values->owners, 1);
  EXPECT_EQ(a.data()[1], 11.0);
}

TEST(GridRecord, DerivingACopyLeavesTheSourceValuesAlone) {
  tervik_data4 source = small_grid();
  tervik_data4 derived(source);  // shares the source's array for now
  data4copy(derived, source);
  derived.set_gridPtr(filled(6, 100.0));
  EXPECT_EQ(source.values->owners, 1);
  EXPECT_EQ(source.data()[0], 10.0);
  EXPECT_EQ(derived.data()[0], 100.0);
}

TEST(GridRecord, Data4copyCopiesEveryHeaderFieldButNotTheValues) {
  tervik_data4 from = small_grid();
  from.valid_time[0] = 2024;
  from.valid_time[4] = 7;
  from.first_lon = 70;
  from.last_lon = 72;
  from.first_lat = 60;
  from.last_lat = 59;
  from.contour_interval = 40;
  from.contour_start = 5000;
  from.contour_end = 6000;
  from.geometry_override = 1;
  tervik_data4 to;
  data4copy(to, from);
  EXPECT_STREQ(to.description, from.description);
  EXPECT_EQ(0, std::memcmp(to.valid_time, from.valid_time, sizeof to.valid_time));
  EXPECT_EQ(to.level, 500);
  EXPECT_EQ(to.lon_step, 1.0);
  EXPECT_EQ(to.lat_step, -1.0);
  EXPECT_EQ(to.first_lon, 70);
  EXPECT_EQ(to.last_lon, 72);
  EXPECT_EQ(to.first_lat, 60);
  EXPECT_EQ(to.last_lat, 59);
  EXPECT_EQ(to.nx, 3);
  EXPECT_EQ(to.ny, 2);
  EXPECT_EQ(to.contour_interval, 40);
  EXPECT_EQ(to.contour_start, 5000);
  EXPECT_EQ(to.contour_end, 6000);
  EXPECT_EQ(to.geometry_override, 1);
  EXPECT_EQ(to.values, nullptr);
}

TEST(GridRecord, SettingANullArrayDropsTheOldOne) {
  tervik_data4 a = small_grid();
  tervik_data4 b(a);
  b.set_gridPtr(nullptr);
  EXPECT_EQ(b.values, nullptr);
  EXPECT_EQ(a.values->owners, 1);
}

TEST(WindRecord, ComponentsAreSharedIndependently) {
  tervik_data11 w;
  w.nx = 2;
  w.ny = 1;
  w.set_gridPtrU(filled(2, 1.0));
  w.set_gridPtrV(filled(2, -1.0));
  tervik_data11 copy(w);
  EXPECT_EQ(w.u_values->owners, 2);
  EXPECT_EQ(w.v_values->owners, 2);
  copy.set_gridPtrV(filled(2, 5.0));
  EXPECT_EQ(w.v_values->owners, 1);
  EXPECT_EQ(w.v()[0], -1.0);
  EXPECT_EQ(copy.v()[0], 5.0);
  EXPECT_EQ(copy.u(), w.u());
  tervik_data11 assigned;
  assigned = copy;
  EXPECT_EQ(w.u_values->owners, 3);
  EXPECT_EQ(assigned.nx, 2);
}

TEST(SoundingLayer, DefaultIsInvalidWithEveryValueMissing) {
  tag_tlogp_layer layer;
  EXPECT_FALSE(layer.valid);
  for (double v : {layer.p, layer.z, layer.t, layer.td, layer.wind_dir, layer.wind_speed})
    EXPECT_EQ(v, 9999.0);
  for (double v : layer.extra) EXPECT_EQ(v, 9999.0);
}
