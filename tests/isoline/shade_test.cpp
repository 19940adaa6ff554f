#include <gtest/gtest.h>
#include <tervik/isoline.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr double kUndef = 9999.0;

struct Ring {
  int colour, hole;
  std::vector<double> x, y;
  int edges = 0;  // points passed with edge set
};

class RingRecorder : public contourBuilder {
 public:
  std::vector<Ring> rings;
  void newShadedLine(double, int first, int second) override {
    rings.push_back({first, second, {}, {}});
  }
  void addShadedPoint(double x, double y, bool edge) override {
    rings.back().x.push_back(x);
    rings.back().y.push_back(y);
    rings.back().edges += edge;
  }
};

double area(const Ring& r) {
  double twice = 0;
  for (size_t k = 0; k + 1 < r.x.size(); ++k)
    twice += (r.x[k] - r.x[0]) * (r.y[k + 1] - r.y[0]) - (r.x[k + 1] - r.x[0]) * (r.y[k] - r.y[0]);
  return twice / 2;
}

int winding(const Ring& r, double px, double py) {
  int w = 0;
  for (size_t k = 0; k + 1 < r.x.size(); ++k) {
    const double x1 = r.x[k], y1 = r.y[k], x2 = r.x[k + 1], y2 = r.y[k + 1];
    const double side = (x2 - x1) * (py - y1) - (px - x1) * (y2 - y1);
    if (y1 <= py && y2 > py && side > 0) ++w;
    if (y1 > py && y2 <= py && side < 0) --w;
  }
  return w;
}

struct Case {
  const char* name;
  int nx, ny;
  std::vector<double> v;
  std::vector<double> levels;
  double x0, y0, dx, dy;
  bool high2low;
  bool defined(int i, int j) const {
    const double a = v[j * nx + i];
    return a != kUndef && std::isfinite(a);
  }
  bool cell(int i, int j) const {
    return defined(i, j) && defined(i + 1, j) && defined(i, j + 1) && defined(i + 1, j + 1);
  }
  double defined_area() const {
    long n = 0;
    for (int j = 0; j + 1 < ny; ++j)
      for (int i = 0; i + 1 < nx; ++i) n += cell(i, j);
    return n * std::fabs(dx * dy);
  }
  // colours 0..n-1 on the levels in the given order
  RingRecorder shade(bool spline) const {
    std::vector<int> colours(levels.size());
    for (size_t k = 0; k < levels.size(); ++k) colours[k] = static_cast<int>(k);
    RingRecorder rec;
    isoline_shade shader(&rec);
    shader.enable_spline(spline);
    auto call =
        high2low ? &isoline_shade::create_isoshade_high2low : &isoline_shade::create_isoshade;
    // nothing to shade (no cell with four defined corners) is a failure
    EXPECT_EQ((shader.*call)(v.data(), nx, ny, x0, y0, dx, dy, levels.data(), colours.data(),
                             static_cast<int>(levels.size()), kUndef, 3),
              defined_area() > 0)
        << name;
    return rec;
  }
};

// Smooth hills, uniform noise (saddles everywhere) and small integers with levels on them
// (crossings on grid points, bands pinched to lines), with missing data and mirrored maps.
std::vector<Case> cases() {
  std::mt19937 gen(7);
  std::uniform_real_distribution<double> u(0, 1);
  auto field = [&](int nx, int ny, int kind, double missing) {
    std::vector<double> v;
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i) {
        const double x = kind == 0   ? std::sin(i / 7.0) * std::cos(j / 5.0) + 0.02 * i
                         : kind == 1 ? u(gen)
                                     : std::floor(u(gen) * 5);
        v.push_back(u(gen) < missing ? (kind == 0 ? NAN : kUndef) : x);
      }
    return v;
  };
  const std::vector<double> hills = {-0.8, -0.4, 0, 0.4, 0.8, 1.2};
  const std::vector<double> noise = {0.1, 0.25, 0.4, 0.5, 0.6, 0.75, 0.9};
  std::vector<Case> list = {
      {"hills", 60, 45, field(60, 45, 0, 0), hills, 0, 0, 1, 1, false},
      {"hills, NaN, mirrored", 50, 40, field(50, 40, 0, 0.03), hills, 100, 60, 0.5, -0.5, false},
      {"hills high to low", 60, 45, field(60, 45, 0, 0), {1.2, 0.4, -0.4}, -20, 10, 2, 1.5, true},
      {"noise", 40, 30, field(40, 30, 1, 0), noise, 0, 0, 1, 1, false},
      {"noise, repeated", 40, 30, field(40, 30, 1, 0), {0.5, 0.1, 0.9, 0.5}, 0, 0, 1, 1, true},
      {"noise with holes", 40, 30, field(40, 30, 1, 0.08), noise, 3, 4, 1, 1, false},
  };
  for (int k = 0; k < 30; ++k) {
    const int nx = 2 + k % 7, ny = 2 + k % 4;
    list.push_back({"small integers", nx, ny, field(nx, ny, 2, k % 2 ? 0.2 : 0), {0, 1, 2, 3}, 1,
                    2, 0.5, -2, k % 3 == 0});
  }
  return list;
}

TEST(FilledContours, RingsTileTheDefinedAreaWithOrientedClosedRings) {
  for (const bool spline : {false, true}) {
    for (const Case& c : cases()) {
      double total = 0;
      for (const Ring& r : c.shade(spline).rings) {
        ASSERT_GE(r.x.size(), 4u) << c.name;
        EXPECT_TRUE(r.x.front() == r.x.back() && r.y.front() == r.y.back()) << c.name;
        EXPECT_EQ(r.edges, 2) << c.name;
        EXPECT_EQ(r.hole == 1, area(r) < 0) << c.name;
        total += area(r);
      }
      EXPECT_NEAR(total, c.defined_area(), 1e-9 * c.defined_area()) << c.name << spline;
    }
  }
}

// Inside a cell the bands follow straight chords while the bilinear surface curves; the two
// can disagree only where the surface is within a quarter of the cell's twist of a level.
TEST(FilledContours, PointsLieInTheBandOfTheirBilinearValue) {
  std::mt19937 gen(42);
  for (const Case& c : cases()) {
    const RingRecorder rec = c.shade(false);
    std::vector<double> sorted = c.levels;
    std::sort(sorted.begin(), sorted.end());
    std::uniform_real_distribution<double> ux(0, c.nx - 1), uy(0, c.ny - 1);
    for (int trial = 0; trial < 1000; ++trial) {
      const double gx = ux(gen), gy = uy(gen);
      const int i = std::min(static_cast<int>(gx), c.nx - 2),
                j = std::min(static_cast<int>(gy), c.ny - 2);
      int expected = -2;  // colour of the band; -2: no band at all
      if (c.cell(i, j)) {
        const double v0 = c.v[j * c.nx + i], v1 = c.v[j * c.nx + i + 1];
        const double v2 = c.v[(j + 1) * c.nx + i + 1], v3 = c.v[(j + 1) * c.nx + i];
        const double fx = gx - i, fy = gy - j;
        const double f =
            v0 * (1 - fx) * (1 - fy) + v1 * fx * (1 - fy) + v2 * fx * fy + v3 * (1 - fx) * fy;
        bool near = false;
        for (double l : sorted)
          near |= std::fabs(f - l) <= std::fabs(v0 - v1 + v2 - v3) / 4 + 1e-12;
        if (near) continue;
        const int band =
            static_cast<int>(std::lower_bound(sorted.begin(), sorted.end(), f) - sorted.begin());
        const int edge = c.high2low ? band : band - 1;  // level whose colour the band carries
        expected =
            edge < 0 || edge >= static_cast<int>(sorted.size())
                ? -1
                : static_cast<int>(std::find(c.levels.begin(), c.levels.end(), sorted[edge]) -
                                   c.levels.begin());
      }
      int cover = 0, in_band = 0;
      for (const Ring& r : rec.rings) {
        const int w = winding(r, c.x0 + gx * c.dx, c.y0 + gy * c.dy);
        cover += w;
        if (r.colour == expected) in_band += w;
      }
      EXPECT_EQ(cover, expected == -2 ? 0 : 1) << c.name << " at " << gx << "," << gy;
      EXPECT_EQ(in_band, expected == -2 ? 0 : 1) << c.name << " at " << gx << "," << gy;
    }
  }
}

// A saddle cell joins its high corners (0,0) and (1,1) across the cell exactly when the
// surface's saddle value, 3/13 at (10/13, 10/13), lies above the level, whatever the mean of
// the corners (0.325) or the shorter pairing of the crossings would say.
TEST(FilledContours, SaddleCellsFollowTheBilinearSurface) {
  const double grid[] = {1, 0, 0, 0.3};
  for (const double level : {0.2, 0.22, 0.24, 0.3}) {
    RingRecorder rec;
    const int colour = 0;
    ASSERT_TRUE(isoline_shade(&rec).create_isoshade(grid, 2, 2, 0, 0, 1, 1, &level, &colour, 1,
                                                    kUndef, 3));
    int upper = 0;  // times the saddle point lies in the band above the level
    for (const Ring& r : rec.rings) upper += r.colour == 0 ? winding(r, 10.0 / 13, 10.0 / 13) : 0;
    EXPECT_EQ(upper, level < 3.0 / 13 ? 1 : 0) << level;
  }
}

}  // namespace
