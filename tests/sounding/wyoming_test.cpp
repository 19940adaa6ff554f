// Characteristic levels of real radiosonde ascents against the indices published with
// them. The published LCL and LFC belong to a parcel with the mean potential temperature
// and mixing ratio of the lowest 500 m, which the page also prints; the tests give the
// profile's first level that parcel's temperature and dew point, so that both sides lift
// the same air.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include <tervik/sounding.h>

#include "sounding/wyoming_page.h"
#include "support/paths.h"

namespace {

using tervik::test::read_wyoming_page;
using tervik::test::WyomingPage;

const char* const kLclT = "Temp [K] of the Lifted Condensation Level";
const char* const kLclP = "Pres [hPa] of the Lifted Condensation Level";
const char* const kLfc = "Level of Free Convection";

struct Ascent {
  std::string name;
  WyomingPage page;
};

// Every page with a published LCL, its first valid level replaced by the mixed-layer parcel.
std::vector<Ascent> mixed_layer_ascents(const std::string& root) {
  std::vector<Ascent> out;
  for (const char* dir : {"metreader_1980", "siphon_extracted", "sharppy"}) {
    for (const auto& f : std::filesystem::directory_iterator(root + "/" + dir)) {
      Ascent a{f.path().filename().string(), read_wyoming_page(f.path().string())};
      if (!a.page.has(kLclT)) continue;
      auto& L = a.page.layers;
      const auto first = std::find_if(L.begin(), L.end(), [](auto& l) { return l.valid; });
      if (first == L.end()) continue;
      const auto i0 = first - L.begin();
      const double p0 = L[i0].p;
      const double theta_k = a.page.indices["Mean mixed layer potential temperature"];
      const double r = a.page.indices["Mean mixed layer mixing ratio"] / 1000.0;
      // Temperature on the parcel's dry adiabat; vapour pressure from the mixing ratio,
      // then the dew point by inverting the library's own Magnus form, so that q(p0, td)
      // is exactly the parcel's specific humidity r / (1 + r).
      L[i0].t = t_dry_adiabat(p0, theta_k - 273.15);
      const double e = p0 * r / (0.622 + r);
      const double x = std::log10(e / 6.112);
      const bool water = e >= 6.112;
      L[i0].td = (water ? 237.3 : 265.5) * x / ((water ? 7.5 : 9.5) - x);
      out.push_back(std::move(a));
    }
  }
  return out;
}

TEST(WyomingAscents, LclAgreesWithThePublishedOne) {
  TERVIK_REQUIRE_SHARED_DATA(root, "soundings_wyoming");
  const auto ascents = mixed_layer_ascents(root);
  ASSERT_GE(ascents.size(), 55u);
  std::vector<double> dt;
  for (auto a : ascents) {
    auto& L = a.page.layers;
    double p = 0, t = 0;
    ASSERT_TRUE(LCL(L.data(), static_cast<int>(L.size()), &p, &t)) << a.name;
    const double d = t + 273.15 - a.page.indices[kLclT];
    dt.push_back(std::fabs(d));
    // Below 0 deg C our saturation is over ice, the published one over water: ice
    // saturates sooner, so our LCL is warmer, by up to 1.4 K for LCLs near -10 deg C.
    // It is never colder beyond rounding of the published values. 1.5 K on the dry
    // adiabat is about 15 hPa at these pressures.
    EXPECT_GE(d, -0.1) << a.name;
    EXPECT_LE(d, 1.5) << a.name;
    EXPECT_NEAR(p, a.page.indices[kLclP], 15.0) << a.name;
  }
  // Most parcels condense above 0 deg C or close to it, where only the constants differ.
  std::nth_element(dt.begin(), dt.begin() + dt.size() / 2, dt.end());
  EXPECT_LT(dt[dt.size() / 2], 0.2);
}

TEST(WyomingAscents, ParcelIsNeutralAtThePublishedLfc) {
  TERVIK_REQUIRE_SHARED_DATA(root, "soundings_wyoming");
  int checked = 0;
  for (auto a : mixed_layer_ascents(root)) {
    if (!a.page.has(kLfc)) continue;
    auto& L = a.page.layers;
    const int n = static_cast<int>(L.size());
    double p_lcl, t_lcl, p, t, td;
    ASSERT_TRUE(LCL(L.data(), n, &p_lcl, &t_lcl));
    ASSERT_TRUE(LFC(L.data(), n, &p, &t, &td)) << a.name;
    // The free-convection level is where parcel and environment curves cross, often at a
    // shallow angle, so compare temperatures rather than pressures: at the published
    // level our parcel is within the LCL difference above (up to about 0.5 K here) plus
    // the pseudo-adiabat's 0.05 K bisection error of neutral.
    const double p_pub = a.page.indices[kLfc];
    double te, td_e;
    ASSERT_TRUE(interpolate_t_at_p_near(L.data(), n, p_pub, &te, &td_e));
    EXPECT_NEAR(t_wet_adiabat(p_pub, theta_se_s(p_lcl, t_lcl)), te, 0.6) << a.name;
    // A warmer parcel turns buoyant lower down, never higher up.
    EXPECT_GE(p, p_pub - 2.0) << a.name;
    ++checked;
  }
  EXPECT_GE(checked, 10);
}

TEST(WyomingAscents, ElIsTheLastBuoyantLevelOfTheAscent) {
  TERVIK_REQUIRE_SHARED_DATA(root, "soundings_wyoming");
  int checked = 0;
  for (auto a : mixed_layer_ascents(root)) {
    auto& L = a.page.layers;
    const int n = static_cast<int>(L.size());
    double p_lfc, t_lfc, td_lfc;
    if (!LFC(L.data(), n, &p_lfc, &t_lfc, &td_lfc)) continue;
    double p = -1, t = -1, td = -1;
    ASSERT_TRUE(EL(L.data(), n, &p, &t, &td)) << a.name;
    // Replay the 0.1 hPa steps: the EL is one of them and buoyant, and at most the step
    // right after it is buoyant too (the latch skips every second step of a run).
    const double th = theta_se_s(p_lfc, t_lfc);
    int el_step = -1, last_buoyant = -1, k = 0;
    for (double pc = p_lfc; pc > 0; pc -= 0.1, ++k) {
      double te, td_e;
      if (!interpolate_t_at_p_near(L.data(), n, pc, &te, &td_e)) break;
      if (pc == p) el_step = k;
      if (te < t_wet_adiabat(pc, th)) last_buoyant = k;
    }
    ASSERT_GE(el_step, 0) << a.name;
    EXPECT_TRUE(last_buoyant == el_step || last_buoyant == el_step + 1) << a.name;
    EXPECT_LE(p, p_lfc);
    ++checked;
  }
  EXPECT_GE(checked, 10);
}

}  // namespace
