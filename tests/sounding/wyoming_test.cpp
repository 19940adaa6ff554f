// Real radiosonde ascents against the indices published with them, where both sides are
// the same quantity computed from the same levels.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include <tervik/sounding.h>

#include "sounding/convective_profile.h"
#include "sounding/wyoming_page.h"
#include "support/paths.h"

namespace {

using tervik::test::WyomingPage;

const char* const kLclT = "Temp [K] of the Lifted Condensation Level";
const char* const kLclP = "Pres [hPa] of the Lifted Condensation Level";
const char* const kLfc = "Level of Free Convection";

std::vector<WyomingPage> all_pages() {
  std::vector<WyomingPage> out;
  const std::string root = tervik::test::shared_data("soundings_wyoming");
  for (const char* dir : {"metreader_1980", "siphon_extracted", "sharppy"}) {
    if (root.empty()) break;
    for (const auto& f : std::filesystem::directory_iterator(root + "/" + dir))
      out.push_back(tervik::test::read_wyoming_page(f.path()));
  }
  return out;
}

// TT and K agree to the published rounding, SWEAT to the knot factor's; our Showalter
// parcel (0.1 K-lattice pseudo-adiabat, exponent 0.286) is up to 0.45 K warmer. Our
// precipitable water (specific humidity, over ice below 0 deg C) is up to 16 % lower.
TEST(WyomingIndices, MandatoryLevelIndicesAndPrecipitableWaterMatchThePublishedOnes) {
  const auto pages = all_pages();
  if (pages.empty()) GTEST_SKIP() << "shared soundings not available";
  struct Comparison { const char* published; double (*index)(tag_tlogp_layer*, int); double tol; };
  const Comparison comparisons[] = {{"Totals totals index", TT, 0.006}, {"K index", K, 0.006},
                                    {"SWEAT index", SWEAT, 0.5}, {"Showalter index", SI, 0.5}};
  int compared[5] = {0, 0, 0, 0, 0};
  for (auto page : pages) {
    const int n = static_cast<int>(page.layers.size());
    for (int k = 0; k < 4; ++k) {
      const Comparison& c = comparisons[k];
      const double ours = c.index(page.layers.data(), n);
      // Pages without the mandatory levels publish interpolated values; ours is undefined.
      if (!page.has(c.published) || ours == 9999.0) continue;
      EXPECT_NEAR(ours, page.indices[c.published], c.tol) << c.published << " " << page.path;
      ++compared[k];
    }
    const std::string pw = "Precipitable water [mm] for entire sounding";
    if (!page.has(pw)) continue;
    tag_physics_station record;
    compute_tlogp_physics(tag_tlogp_station{1, page.layers}, record);
    const double ratio = record.extra[3] / page.indices[pw];
    EXPECT_TRUE(ratio > 0.84 && ratio <= 1.0) << ratio << " " << page.path;
    ++compared[4];
  }
  for (int k = 0; k < 5; ++k) EXPECT_GE(compared[k], 55) << k;
}

// Norman, 4 May 1999 00 UTC: our ground parcel is 0.6 K cooler and 0.8 g/kg moister than
// the published 500 m mean parcel, so its LCL and LFC lie lower and its CAPE is higher.
TEST(WyomingIndices, ParcelQuantitiesOfTheNormanOutbreakSounding) {
  TERVIK_REQUIRE_SHARED_DATA(path, "soundings_wyoming/siphon_extracted/wyoming_sounding.html");
  auto page = tervik::test::read_wyoming_page(path);
  tag_physics_station r;
  compute_tlogp_physics(tag_tlogp_station{72357, page.layers}, r);
  const auto& pub = page.indices;
  EXPECT_NEAR(r.index[42], pub.at("Convective Available Potential Energy"), 0.15 * 2252.27);
  EXPECT_NEAR(r.index[43], -pub.at("Convective Inhibition"), 0.25 * 120.55);
  EXPECT_NEAR(r.index[57], pub.at(kLfc), 15.0);
  EXPECT_NEAR(r.index[54], pub.at(kLclT) - 273.15, 1.5);
  EXPECT_TRUE(r.index[53] > pub.at(kLclP) && r.index[53] < pub.at(kLclP) + 25.0);
}

// The published LCL and LFC lift the mean parcel of the lowest 500 m, printed on the page:
// the first valid level gets that parcel's temperature and dew point.
TEST(WyomingAscents, MixedLayerParcelReachesThePublishedLclAndIsNeutralAtItsLfc) {
  std::vector<double> dt;
  int lfcs = 0;
  for (auto page : all_pages()) {
    auto& L = page.layers;
    const auto first = std::find_if(L.begin(), L.end(), [](auto& l) { return l.valid; });
    if (!page.has(kLclT) || first == L.end()) continue;
    const double r = page.indices["Mean mixed layer mixing ratio"] / 1000.0;
    const double theta_ml = page.indices["Mean mixed layer potential temperature"] - 273.15;
    first->t = t_dry_adiabat(first->p, theta_ml);
    first->td = tervik::test::dew_point_of(first->p * r / (0.622 + r));
    const int n = static_cast<int>(L.size());
    double p_lcl = 0, t_lcl = 0, p, t, td, te;
    ASSERT_TRUE(LCL(L.data(), n, &p_lcl, &t_lcl)) << page.path;
    // Ice saturates sooner: below 0 deg C our LCL is warmer, by up to 1.4 K near -10.
    const double d = t_lcl + 273.15 - page.indices[kLclT];
    dt.push_back(std::fabs(d));
    EXPECT_TRUE(d >= -0.1 && d <= 1.5) << d << " " << page.path;
    EXPECT_NEAR(p_lcl, page.indices[kLclP], 15.0) << page.path;
    if (!page.has(kLfc)) continue;
    // Parcel and environment cross at a shallow angle: compare temperatures there.
    ASSERT_TRUE(LFC(L.data(), n, &p, &t, &td)) << page.path;
    const double p_pub = page.indices[kLfc];
    ASSERT_TRUE(interpolate_t_at_p_near(L.data(), n, p_pub, &te, &td));
    EXPECT_NEAR(t_wet_adiabat(p_pub, theta_se_s(p_lcl, t_lcl)), te, 0.6) << page.path;
    EXPECT_GE(p, p_pub - 2.0) << page.path;  // a warmer parcel turns buoyant lower, not higher
    ++lfcs;
  }
  if (dt.empty()) GTEST_SKIP() << "shared soundings not available";
  EXPECT_GE(dt.size(), 55u);
  EXPECT_GE(lfcs, 10);
  // Most parcels condense above 0 deg C or close to it, where only the constants differ.
  std::nth_element(dt.begin(), dt.begin() + dt.size() / 2, dt.end());
  EXPECT_LT(dt[dt.size() / 2], 0.2);
}

}  // namespace
