#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <tervik/objective.h>

#include "objective/stations.h"
#include "support/paths.h"

using namespace tervik::test;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

// Sea-level pressure (hPa) of the North-American surface reports of 12 UTC 12 March 1993,
// as the storm of that week formed over the Gulf of Mexico.
Stations read_pressure(const std::string& path) {
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);  // header: station,valid,lon,lat,...,mslp (column 11),...
  Stations s;
  int number = 0;
  while (std::getline(in, line)) {
    std::vector<std::string> f;
    std::stringstream ss(line);
    for (std::string item; std::getline(ss, item, ',');) f.push_back(item);
    if (f.size() < 12 || f[1] != "1993-03-12 12:00:00" || f[11].empty()) continue;
    s.add(++number, std::stod(f[2]), std::stod(f[3]), std::stod(f[11]));
  }
  return s;
}

TEST(RealStations, EverySchemeFollowsTheSurfacePressureOfAStormMorning) {
  TERVIK_REQUIRE_SHARED_DATA(path, "stations/SFC_obs.csv");
  Stations all = read_pressure(path);
  ASSERT_GT(all.count(), 400);
  const Domain d{61, 26, -125.0, -65.0, 25.0, 50.0};
  // Stations inside the domain, for checking the analyses against.
  Stations inside;
  for (int k = 0; k < all.count(); ++k)
    if (all.lon[k] > d.lon_min && all.lon[k] < d.lon_max && all.lat[k] > d.lat_min && all.lat[k] < d.lat_max)
      inside.add(all.id[k], all.lon[k], all.lat[k], all.value[k]);
  const double lowest = *std::min_element(inside.value.begin(), inside.value.end());
  const double highest = *std::max_element(inside.value.begin(), inside.value.end());
  auto rms = [&](const std::vector<double>& g) {
    double sum = 0;
    for (int k = 0; k < inside.count(); ++k) {
      const double e = bilinear(g, d, inside.lon[k], inside.lat[k]) - inside.value[k];
      sum += e * e;
    }
    return std::sqrt(sum / inside.count());
  };

  daBarnes barnes;
  std::vector<double> b = run(barnes, d, all);
  daSurfaceFit fit;
  std::vector<double> f = run(fit, d, all);
  // The Cressman schemes want a first guess near the observations: the Barnes analysis.
  daCressman cressman(5);
  daCressmanHQ hq(5);
  const int surface[3] = {1, 1000, 0};
  CaptureStdout();
  std::vector<double> c = run(cressman, d, all, b.data());
  std::vector<double> h = run(hq, d, all, b.data(), surface);
  GetCapturedStdout();
  // Over the open sea, farther than a few degrees from every station, the Barnes weights
  // vanish and its grid holds 0 there; compare only grid points near some station.
  std::vector<bool> near(d.nx * d.ny, false);
  for (int j = 0; j < d.ny; ++j)
    for (int i = 0; i < d.nx; ++i)
      for (int k = 0; k < inside.count() && !near[j * d.nx + i]; ++k)
        near[j * d.nx + i] = std::hypot(inside.lon[k] - d.lon(i), inside.lat[k] - d.lat(j)) < 2.0;
  struct Result { const char* name; const std::vector<double>& g; double tolerance; };
  for (const Result& r : {Result{"barnes", b, 0.6}, Result{"fit", f, 1.2}, Result{"cressman", c, 0.5},
                          Result{"hq", h, 0.5}}) {
    ASSERT_EQ(r.g.size(), size_t(d.nx * d.ny)) << r.name;
    EXPECT_LT(rms(r.g), r.tolerance) << r.name;
    double lo = 1e300, hi = -1e300;
    for (size_t p = 0; p < r.g.size(); ++p)
      if (near[p]) lo = std::min(lo, r.g[p]), hi = std::max(hi, r.g[p]);
    EXPECT_GT(lo, lowest - 5) << r.name;
    EXPECT_LT(hi, highest + 5) << r.name;
  }
}

}  // namespace
