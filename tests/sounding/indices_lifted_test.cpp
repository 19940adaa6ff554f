#include <vector>

#include <gtest/gtest.h>

#include <tervik/sounding.h>

#include "sounding/indices_profiles.h"

using tervik::test::make_level;

namespace {

int size_of(const std::vector<tag_tlogp_layer>& v) { return static_cast<int>(v.size()); }

// A warm moist ground under a cold 500 hPa level: every lifted parcel ends warmer than
// its surroundings. Dew points at 850, 700 and 500 hPa are equal so that their mean is
// exactly the 850 hPa value.
std::vector<tag_tlogp_layer> unstable_profile() {
  return {make_level(1000, 100, 28, 22, 180, 5),  make_level(950, 540, 25, 20, 185, 6),
          make_level(900, 990, 22, 18, 190, 7),   make_level(850, 1460, 19, 15, 200, 10),
          make_level(800, 1950, 15, 15, 210, 12), make_level(700, 3010, 8, 15, 230, 15),
          make_level(600, 4200, 0, -10, 240, 20), make_level(500, 5600, -12, 15, 250, 25),
          make_level(400, 7200, -25, -35, 255, 30)};
}

}  // namespace

TEST(LiftedIndices, UnstableProfileHasNegativeIndicesAndTheyAgree) {
  auto v = unstable_profile();
  const int n = size_of(v);
  const double si = SI(v.data(), n), li = LI(v.data(), n), bli = BLI(v.data(), n);
  EXPECT_LT(si, 0.0);
  EXPECT_LT(li, si);  // the ground parcel is warmer and moister than the 850 hPa one
  // The best lifted index includes the ground parcel (the sample at the ground is the
  // ground itself), so it is never above LI.
  EXPECT_LE(bli, li);
  // Faust is the lifted parcel's own 500 hPa temperature; with equal dew points it is the
  // Showalter parcel.
  EXPECT_DOUBLE_EQ(Faust(v.data(), n), -12.0 - si);
  EXPECT_DOUBLE_EQ(DCI(v.data(), n), 19.0 + 15.0 - li);
  EXPECT_DOUBLE_EQ(mJI(v.data(), n), JI(v.data(), n) - (8.0 - 15.0) * 0.5 + 3.0);
}

TEST(LiftedIndices, SlwNeedsAnLclBelow500) {
  auto v = unstable_profile();
  EXPECT_NE(SLW(v.data(), size_of(v)), 9999.0);
  v[0].td = -60.0;  // a bone-dry ground parcel condenses above 500 hPa
  EXPECT_EQ(SLW(v.data(), size_of(v)), 9999.0);
}

TEST(LiftedIndices, GroundAbove700And500) {
  auto v = unstable_profile();
  std::vector<tag_tlogp_layer> high(v.begin() + 6, v.end());  // ground at 600 hPa
  EXPECT_EQ(BLI(high.data(), size_of(high)), 1000.0);
  EXPECT_NE(LI(high.data(), size_of(high)), 9999.0);
  high[1].p = 501.0;  // no 500 hPa level: the lookup comes before the ground test
  EXPECT_EQ(BLI(high.data(), size_of(high)), 9999.0);
  std::vector<tag_tlogp_layer> top(v.begin() + 7, v.end());  // ground at 500 hPa
  EXPECT_EQ(LI(top.data(), size_of(top)), 9999.0);
  EXPECT_EQ(SLW(top.data(), size_of(top)), 9999.0);
}

TEST(LiftedIndices, BliStepsFiftyHectopascalsFromTheGround) {
  // Only the parcel at 1000 - 50 = 950 hPa is moist; a BLI tied to fixed mandatory levels
  // (1000, 850, 700) would miss it.
  auto v = unstable_profile();
  for (auto& l : v) l.td = l.t - 25.0;
  v[1].td = v[1].t;
  const int n = size_of(v);
  const double from950 = -12.0 - t_lift2p(950.0, v[1].t, v[1].td, 500.0);
  EXPECT_DOUBLE_EQ(BLI(v.data(), n), from950);
}

TEST(JeffersonIndex, UsesTheSecondRecordWhateverItsPressure) {
  auto v = unstable_profile();
  const double ji = JI(v.data(), size_of(v));
  EXPECT_DOUBLE_EQ(ji, 1.6 * theta_se_s(950.0, 25.0) + 12.0 - 11.0);
  EXPECT_EQ(JI(v.data(), 1), 9999.0);
  v[1].valid = false;  // no skipping to the next valid record
  EXPECT_EQ(JI(v.data(), size_of(v)), 9999.0);
  EXPECT_EQ(mJI(v.data(), size_of(v)), 9999.0);
}
