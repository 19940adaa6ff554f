#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <tervik/isoline.h>

namespace {

constexpr double kUndef = 9999.0;

struct Ring {
  double level;
  int colour, hole;
  std::vector<double> x, y;
  std::vector<bool> edge;
};

// Records the shaded rings exactly as the tracer hands them over.
class RingRecorder : public contourBuilder {
 public:
  std::vector<Ring> rings;
  bool open = false;

  void newShadedLine(double level, int first, int second) override {
    current_ = Ring{level, first, second, {}, {}, {}};
    open = true;
  }
  void addShadedPoint(double x, double y, bool edge) override {
    current_.x.push_back(x);
    current_.y.push_back(y);
    current_.edge.push_back(edge);
  }
  void addShadedLine() override {
    rings.push_back(current_);
    open = false;
  }

 private:
  Ring current_;
};

double signed_area(const Ring& r) {
  double twice = 0;
  for (size_t k = 0; k + 1 < r.x.size(); ++k)
    twice += (r.x[k] - r.x[0]) * (r.y[k + 1] - r.y[0]) - (r.x[k + 1] - r.x[0]) * (r.y[k] - r.y[0]);
  return twice / 2;
}

// Winding number of a closed ring around (px, py).
int winding(const Ring& r, double px, double py) {
  int w = 0;
  for (size_t k = 0; k + 1 < r.x.size(); ++k) {
    const double x1 = r.x[k], y1 = r.y[k], x2 = r.x[k + 1], y2 = r.y[k + 1];
    const double side = (x2 - x1) * (py - y1) - (px - x1) * (y2 - y1);
    if (y1 <= py) {
      if (y2 > py && side > 0) ++w;
    } else if (y2 <= py && side < 0) {
      --w;
    }
  }
  return w;
}

struct Field {
  int nx, ny;
  std::vector<double> v;
  double at(int i, int j) const { return v[static_cast<size_t>(j) * nx + i]; }
  bool defined(int i, int j) const {
    const double a = at(i, j);
    return a != kUndef && std::isfinite(a);
  }
  bool cell_defined(int i, int j) const {
    return defined(i, j) && defined(i + 1, j) && defined(i, j + 1) && defined(i + 1, j + 1);
  }
  long defined_cells() const {
    long n = 0;
    for (int j = 0; j + 1 < ny; ++j)
      for (int i = 0; i + 1 < nx; ++i) n += cell_defined(i, j);
    return n;
  }
};

Field smooth_field(int nx, int ny) {
  Field f{nx, ny, {}};
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) f.v.push_back(std::sin(i / 7.0) * std::cos(j / 5.0) + 0.02 * i);
  return f;
}

// Uniform noise: saddles everywhere, and ring shapes that a smooth field never makes.
Field noisy_field(int nx, int ny, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> u(0, 1);
  Field f{nx, ny, {}};
  for (int k = 0; k < nx * ny; ++k) f.v.push_back(u(gen));
  return f;
}

// Small integers with the levels on the integers: crossings fall on grid points.
Field integer_field(int nx, int ny, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_int_distribution<int> u(0, 4);
  Field f{nx, ny, {}};
  for (int k = 0; k < nx * ny; ++k) f.v.push_back(u(gen));
  return f;
}

Field with_missing(Field f, unsigned seed, double fraction, double marker) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> u(0, 1);
  for (double& x : f.v)
    if (u(gen) < fraction) x = marker;
  return f;
}

struct ShadeCase {
  const char* name;
  Field field;
  std::vector<double> levels;
  double x0, y0, dx, dy;
  bool high2low;
};

std::vector<ShadeCase> property_cases() {
  const std::vector<double> smooth_levels = {-0.8, -0.4, 0, 0.4, 0.8, 1.2};
  const std::vector<double> noise_levels = {0.1, 0.25, 0.4, 0.5, 0.6, 0.75, 0.9};
  const std::vector<double> integer_levels = {0, 1, 2, 3};
  return {
      {"smooth", smooth_field(60, 45), smooth_levels, 0, 0, 1, 1, false},
      {"smooth map units", smooth_field(60, 45), smooth_levels, 100, 60, 0.5, -0.5, false},
      {"smooth high to low", smooth_field(60, 45), {1.2, 0.4, -0.4}, -20, 10, 2, 1.5, true},
      {"noise", noisy_field(40, 30, 7), noise_levels, 0, 0, 1, 1, false},
      {"noise shuffled levels", noisy_field(40, 30, 8), {0.5, 0.1, 0.9, 0.25}, 0, 0, 1, 1, true},
      {"noise with holes", with_missing(noisy_field(40, 30, 9), 10, 0.08, kUndef), noise_levels,
       3, 4, 1, 1, false},
      {"smooth with NaN", with_missing(smooth_field(50, 40), 11, 0.03, NAN), smooth_levels, 0, 0,
       -1, 1, false},
      {"integers on levels", integer_field(30, 25, 12), integer_levels, 0, 0, 1, 1, false},
      {"integers with holes", with_missing(integer_field(30, 25, 13), 14, 0.1, kUndef),
       integer_levels, 0, 0, 1, 1, true},
  };
}

std::vector<int> iota_colours(size_t n) {
  std::vector<int> c(n);
  for (size_t k = 0; k < n; ++k) c[k] = static_cast<int>(k);
  return c;
}

RingRecorder shade(const ShadeCase& c, bool spline, int open_bands = 3) {
  RingRecorder rec;
  isoline_shade shader(&rec);
  shader.enable_spline(spline);
  const std::vector<int> colours = iota_colours(c.levels.size());
  auto call = c.high2low ? &isoline_shade::create_isoshade_high2low
                         : &isoline_shade::create_isoshade;
  EXPECT_TRUE((shader.*call)(c.field.v.data(), c.field.nx, c.field.ny, c.x0, c.y0, c.dx, c.dy,
                             c.levels.data(), colours.data(), static_cast<int>(c.levels.size()),
                             kUndef, open_bands))
      << c.name;
  return rec;
}

TEST(FilledContours, RingAreasAddUpToTheDefinedArea) {
  for (const bool spline : {false, true}) {
    for (const ShadeCase& c : property_cases()) {
      const RingRecorder rec = shade(c, spline);
      double total = 0;
      for (const Ring& r : rec.rings) total += signed_area(r);
      const double expected = c.field.defined_cells() * std::fabs(c.dx * c.dy);
      EXPECT_NEAR(total, expected, 1e-9 * expected) << c.name << (spline ? " (spline)" : "");
    }
  }
}

TEST(FilledContours, RingsAreClosedOrientedAndFlagged) {
  for (const bool spline : {false, true}) {
    for (const ShadeCase& c : property_cases()) {
      const RingRecorder rec = shade(c, spline);
      ASSERT_FALSE(rec.rings.empty()) << c.name;
      int holes = 0;
      for (const Ring& r : rec.rings) {
        ASSERT_GE(r.x.size(), 4u) << c.name;
        EXPECT_EQ(r.x.front(), r.x.back()) << c.name;
        EXPECT_EQ(r.y.front(), r.y.back()) << c.name;
        EXPECT_TRUE(r.edge.front() && r.edge.back()) << c.name;
        EXPECT_EQ(std::count(r.edge.begin(), r.edge.end(), true), 2) << c.name;
        EXPECT_EQ(r.hole == 1, signed_area(r) < 0) << c.name;
        EXPECT_NE(signed_area(r), 0) << c.name;
        holes += r.hole;
      }
      if (std::string(c.name).find("noise") != std::string::npos) {
        EXPECT_GT(holes, 0) << c.name;
      }
    }
  }
}

// Inside a cell the bands follow straight chords while the bilinear surface curves; the two
// can disagree only where the surface is within a quarter of the cell's twist of a level.
TEST(FilledContours, PointsLieInTheBandOfTheirBilinearValue) {
  std::mt19937 gen(42);
  for (const ShadeCase& c : property_cases()) {
    const RingRecorder rec = shade(c, false);
    std::vector<double> sorted = c.levels;
    std::sort(sorted.begin(), sorted.end());
    std::uniform_real_distribution<double> ux(0, c.field.nx - 1), uy(0, c.field.ny - 1);
    int checked = 0;
    for (int trial = 0; trial < 3000; ++trial) {
      const double gx = ux(gen), gy = uy(gen);
      const int i = std::min(static_cast<int>(gx), c.field.nx - 2);
      const int j = std::min(static_cast<int>(gy), c.field.ny - 2);
      const double px = c.x0 + gx * c.dx, py = c.y0 + gy * c.dy;
      int cover = 0;
      if (!c.field.cell_defined(i, j)) {
        for (const Ring& r : rec.rings) cover += winding(r, px, py);
        EXPECT_EQ(cover, 0) << c.name << " at missing cell " << i << "," << j;
        continue;
      }
      const double v0 = c.field.at(i, j), v1 = c.field.at(i + 1, j);
      const double v2 = c.field.at(i + 1, j + 1), v3 = c.field.at(i, j + 1);
      const double fx = gx - i, fy = gy - j;
      const double f = v0 * (1 - fx) * (1 - fy) + v1 * fx * (1 - fy) + v2 * fx * fy +
                       v3 * (1 - fx) * fy;
      const double tolerance = std::fabs(v0 - v1 + v2 - v3) / 4 + 1e-12;
      bool near_level = false;
      for (double l : sorted) near_level |= std::fabs(f - l) <= tolerance;
      if (near_level) continue;
      const int band = static_cast<int>(std::lower_bound(sorted.begin(), sorted.end(), f) -
                                        sorted.begin());
      // colours 0..n-1 on the levels in the given order
      int expected_colour = -1;
      const int edge = c.high2low ? band : band - 1;
      if (edge >= 0 && edge < static_cast<int>(sorted.size()))
        expected_colour = static_cast<int>(
            std::find(c.levels.begin(), c.levels.end(), sorted[edge]) - c.levels.begin());
      int in_band = 0;
      for (const Ring& r : rec.rings) {
        const int w = winding(r, px, py);
        cover += w;
        if (r.colour == expected_colour) in_band += w;
      }
      EXPECT_EQ(cover, 1) << c.name << " at " << gx << "," << gy;
      EXPECT_EQ(in_band, 1) << c.name << " at " << gx << "," << gy << " value " << f;
      ++checked;
    }
    EXPECT_GT(checked, 100) << c.name;
  }
}

// Without smoothing, every point of every contour line is a corner of the bands, to the
// bit: the bands are drawn through the same side crossings in the same map arithmetic.
TEST(FilledContours, BandsMeetTheLinesPointForPoint) {
  const Field f = noisy_field(25, 20, 5);
  const std::vector<double> levels = {0.2, 0.5, 0.8};
  const std::vector<int> colours = iota_colours(levels.size());
  const double x0 = 70.3, y0 = 55.1, dx = 0.37, dy = -0.29;
  isolineContourBuilder lines;
  isoline_analysis_gx tracer(&lines);
  tracer.enable_spline(false);
  std::vector<double> grid = f.v;
  ASSERT_TRUE(tracer.create_isoline(grid.data(), f.nx, f.ny, x0, y0, dx, dy, levels, kUndef));
  RingRecorder rec;
  isoline_shade shader(&rec);
  shader.enable_spline(false);
  ASSERT_TRUE(shader.create_isoshade(f.v.data(), f.nx, f.ny, x0, y0, dx, dy, levels.data(),
                                     colours.data(), 3, kUndef, 3));
  std::set<std::pair<double, double>> corners;
  for (const Ring& r : rec.rings)
    for (size_t k = 0; k < r.x.size(); ++k) corners.insert({r.x[k], r.y[k]});
  size_t points = 0;
  for (const tag_isoline& line : lines.getLayer()->lines) {
    for (const tag_isoline_point& p : line.points) {
      EXPECT_TRUE(corners.count({p.x, p.y})) << line.level << " at " << p.x << "," << p.y;
      ++points;
    }
  }
  EXPECT_GT(points, 100u);
  lines.releaseContour();
}

// A saddle cell: the high corners (0,0) and (1,1) are joined across the cell when the
// surface's saddle value (3/13 here, at (10/13, 10/13)) lies above the level, and cut off
// from each other when it lies below, whatever the mean of the corners (0.325) says.
TEST(FilledContours, SaddleCellsFollowTheBilinearSurface) {
  const double grid[] = {1, 0, 0, 0.3};  // (0,0) (1,0) / (0,1) (1,1)
  const double saddle = 10.0 / 13;
  struct SaddleCase { double level; int colour_at_saddle; };
  const SaddleCase cases[] = {{0.2, 0}, {0.22, 0}, {0.24, -1}, {0.3, -1}};
  for (const SaddleCase& c : cases) {
    RingRecorder rec;
    isoline_shade shader(&rec);
    shader.enable_spline(false);
    const int colour = 0;
    ASSERT_TRUE(shader.create_isoshade(grid, 2, 2, 0, 0, 1, 1, &c.level, &colour, 1, kUndef, 3));
    int in_band = 0, cover = 0;
    for (const Ring& r : rec.rings) {
      const int w = winding(r, saddle, saddle);
      cover += w;
      if (r.colour == c.colour_at_saddle) in_band += w;
    }
    EXPECT_EQ(cover, 1) << c.level;
    EXPECT_EQ(in_band, 1) << c.level;
  }
}

// Values rise from 0 to 10 along x, so every band is one strip whose width is known.
TEST(FilledContours, ColoursAndLevelsFollowTheOrderOfShading) {
  Field ramp{11, 3, {}};
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 11; ++i) ramp.v.push_back(i);
  const double levels[] = {5, 2.5, 7.5};
  const int colours[] = {20, 10, 30};
  struct Expect { int colour; double level, width; };
  const Expect ascending[] = {{-1, 2.5, 2.5}, {10, 2.5, 2.5}, {20, 5, 2.5}, {30, 7.5, 2.5}};
  const Expect descending[] = {{10, 2.5, 2.5}, {20, 5, 2.5}, {30, 7.5, 2.5}, {-1, 7.5, 2.5}};
  for (const bool high2low : {false, true}) {
    RingRecorder rec;
    isoline_shade shader(&rec);
    shader.enable_spline(false);
    auto call = high2low ? &isoline_shade::create_isoshade_high2low
                         : &isoline_shade::create_isoshade;
    ASSERT_TRUE((shader.*call)(ramp.v.data(), 11, 3, 0, 0, 1, 1, levels, colours, 3, kUndef, 3));
    ASSERT_EQ(rec.rings.size(), 4u);
    const Expect* want = high2low ? descending : ascending;
    for (int k = 0; k < 4; ++k) {
      EXPECT_EQ(rec.rings[k].colour, want[k].colour) << high2low << " band " << k;
      EXPECT_EQ(rec.rings[k].level, want[k].level) << high2low << " band " << k;
      EXPECT_EQ(rec.rings[k].hole, 0);
      EXPECT_NEAR(signed_area(rec.rings[k]), want[k].width * 2, 1e-12) << high2low << k;
    }
  }
}

TEST(FilledContours, OpenBandsAreBuiltOnRequest) {
  Field ramp{11, 2, {}};
  for (int j = 0; j < 2; ++j)
    for (int i = 0; i < 11; ++i) ramp.v.push_back(i);
  const double levels[] = {2, 6};
  const int colours[] = {0, 1};
  // open_bands -> area covered: below 2 is 2 wide, 2..6 is 4 wide, above 6 is 4 wide
  const double covered[] = {4, 6, 8, 10};
  for (int open = 0; open < 4; ++open) {
    RingRecorder rec;
    isoline_shade shader(&rec);
    ASSERT_TRUE(shader.create_isoshade(ramp.v.data(), 11, 2, 0, 0, 1, 1, levels, colours, 2,
                                       kUndef, open));
    double total = 0;
    for (const Ring& r : rec.rings) total += signed_area(r);
    EXPECT_NEAR(total, covered[open], 1e-12) << open;
  }
}

// A peak inside a ring of missing values: the band around the peak has the peak as a hole,
// and the missing ring is a hole in the band outside it.
TEST(FilledContours, HolesAroundPeaksAndMissingData) {
  Field f{9, 9, {}};
  for (int j = 0; j < 9; ++j)
    for (int i = 0; i < 9; ++i) f.v.push_back(i == 4 && j == 4 ? 10 : 0);
  const double level = 5;
  const int colour = 0;
  RingRecorder rec;
  isoline_shade shader(&rec);
  shader.enable_spline(false);
  ASSERT_TRUE(shader.create_isoshade(f.v.data(), 9, 9, 0, 0, 1, 1, &level, &colour, 1, kUndef, 3));
  int outer_low = 0, hole_low = 0, outer_high = 0;
  for (const Ring& r : rec.rings) {
    if (r.colour == -1) (r.hole ? hole_low : outer_low)++;
    if (r.colour == 0 && !r.hole) ++outer_high;
  }
  EXPECT_EQ(outer_low, 1);
  EXPECT_EQ(hole_low, 1);
  EXPECT_EQ(outer_high, 1);

  for (int i = 2; i <= 6; ++i)
    for (int j : {2, 6}) f.v[j * 9 + i] = f.v[i * 9 + j] = kUndef;
  rec.rings.clear();
  ASSERT_TRUE(shader.create_isoshade(f.v.data(), 9, 9, 0, 0, 1, 1, &level, &colour, 1, kUndef, 3));
  double outside = 0, total = 0;
  for (const Ring& r : rec.rings) {
    total += signed_area(r);
    if (r.x.front() < 1.5 || r.x.front() > 6.5 || r.y.front() < 1.5 || r.y.front() > 6.5)
      outside += signed_area(r);
  }
  // 8 x 8 cells less the 6 x 6 that touch missing data, and the 2 x 2 inside
  EXPECT_NEAR(outside, 64 - 36, 1e-12);
  EXPECT_NEAR(total, 64 - 36 + 4, 1e-12);
}

TEST(FilledContours, UnusableInputFailsWithoutOutput) {
  const Field f = smooth_field(5, 4);
  const Field missing = with_missing(smooth_field(5, 4), 1, 2.0, kUndef);
  const double levels[] = {0.1, 0.2};
  const double nan_levels[] = {NAN, NAN};
  const int colours[] = {0, 1};
  struct BadCase { const char* name; const double* grid; int nx, ny; const double* levels;
                   const int* colours; int count; };
  const BadCase cases[] = {
      {"null grid", nullptr, 5, 4, levels, colours, 2},
      {"one column", f.v.data(), 1, 4, levels, colours, 2},
      {"one row", f.v.data(), 5, 1, levels, colours, 2},
      {"negative size", f.v.data(), -5, 4, levels, colours, 2},
      {"no levels", f.v.data(), 5, 4, levels, colours, 0},
      {"null levels", f.v.data(), 5, 4, nullptr, colours, 2},
      {"null colours", f.v.data(), 5, 4, levels, nullptr, 2},
      {"NaN levels", f.v.data(), 5, 4, nan_levels, colours, 2},
      {"all missing", missing.v.data(), 5, 4, levels, colours, 2},
  };
  for (const BadCase& c : cases) {
    RingRecorder rec;
    isoline_shade shader(&rec);
    EXPECT_FALSE(shader.create_isoshade(c.grid, c.nx, c.ny, 0, 0, 1, 1, c.levels, c.colours,
                                        c.count, kUndef, 3))
        << c.name;
    EXPECT_TRUE(rec.rings.empty()) << c.name;
    isoline_shade null_builder(nullptr);
    EXPECT_FALSE(null_builder.create_isoshade(f.v.data(), 5, 4, 0, 0, 1, 1, levels, colours, 2,
                                              kUndef, 3));
  }
}

// Many levels, most far outside the field, cost no more than the bands that exist.
TEST(FilledContours, ManyLevelsAndEqualLevels) {
  const Field f = smooth_field(30, 20);
  std::vector<double> levels;
  for (int k = 0; k < 2000000; ++k) levels.push_back(-1000 + k * 0.001);
  levels.push_back(0.5);
  levels.push_back(0.5);
  const std::vector<int> colours = iota_colours(levels.size());
  RingRecorder rec;
  isoline_shade shader(&rec);
  shader.enable_spline(false);
  ASSERT_TRUE(shader.create_isoshade(f.v.data(), 30, 20, 0, 0, 1, 1, levels.data(),
                                     colours.data(), static_cast<int>(levels.size()), kUndef, 3));
  double total = 0;
  for (const Ring& r : rec.rings) total += signed_area(r);
  EXPECT_NEAR(total, 29 * 19, 1e-9);
}

// Tiny grids make every corner case of the walk common: levels through grid points, missing
// corners touching diagonally, bands pinched to a point, mirrored maps.
TEST(FilledContours, SmallRandomFieldsTileExactly) {
  const std::vector<double> on_values = {0, 1, 2, 3}, between = {0.3, 0.5, 0.7};
  const std::vector<int> colours = {0, 1, 2, 3};
  int failures = 0;
  for (int nx : {2, 3, 5, 8}) {
    for (int ny : {2, 4, 7}) {
      for (unsigned seed = 0; seed < 60; ++seed) {
        Field f = seed % 3 == 2 ? noisy_field(nx, ny, seed) : integer_field(nx, ny, seed + nx);
        if (seed % 3 != 0) f = with_missing(f, seed, 0.2, kUndef);
        const std::vector<double>& levels = seed % 3 == 2 ? between : on_values;
        const double want = f.defined_cells();
        for (const bool spline : {false, true}) {
          for (const bool high2low : {false, true}) {
            RingRecorder rec;
            isoline_shade shader(&rec);
            shader.enable_spline(spline);
            auto call = high2low ? &isoline_shade::create_isoshade_high2low
                                 : &isoline_shade::create_isoshade;
            const bool ok = (shader.*call)(f.v.data(), nx, ny, 1, 2, 0.5, -2, levels.data(),
                                           colours.data(), static_cast<int>(levels.size()),
                                           kUndef, 3);
            double total = 0;
            for (const Ring& r : rec.rings) total += signed_area(r);
            if (ok != (want > 0) || std::fabs(total - want) > 1e-9 * (want + 1)) {
              ADD_FAILURE() << nx << "x" << ny << " seed " << seed << " spline " << spline
                            << " high2low " << high2low << ": " << total << " vs " << want;
              if (++failures > 5) return;
            }
          }
        }
      }
    }
  }
}
}  // namespace
