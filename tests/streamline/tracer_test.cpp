#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <tervik/streamline.h>

#include "support/paths.h"

namespace {

constexpr double kUndef = 9999.0;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Wind {
  int nx = 0, ny = 0;
  std::vector<double> u, v;
};

Wind make_wind(int nx, int ny, const std::function<void(double, double, double&, double&)>& f) {
  Wind w{nx, ny, std::vector<double>(nx * ny), std::vector<double>(nx * ny)};
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) f(i, j, w.u[j * nx + i], w.v[j * nx + i]);
  return w;
}

// Traces with map coordinates equal to grid coordinates (x0 = y0 = 0, dx = dy = 1).
tagSTREAMLINE_LAYER trace(Wind& w, int density, double undef = kUndef) {
  tagSTREAMLINE_LAYER layer;
  strmStreamlineBuilder builder(&layer);
  streamline_analysis_gx tracer(&builder);
  EXPECT_TRUE(tracer.create_streamline(w.u.data(), w.v.data(), w.nx, w.ny, 0, 0, 1, 1, undef,
                                       density));
  return layer;
}

// The wind at a point, interpolated independently of the tracer.
void wind_at(const Wind& w, double x, double y, double& u, double& v) {
  const int i = static_cast<int>(x), j = static_cast<int>(y);
  const double fx = x - i, fy = y - j;
  auto at = [&](const std::vector<double>& c) {
    const int n = j * w.nx + i;
    return (1 - fx) * (1 - fy) * c[n] + fx * (1 - fy) * c[n + 1] + (1 - fx) * fy * c[n + w.nx] +
           fx * fy * c[n + w.nx + 1];
  };
  u = at(w.u);
  v = at(w.v);
}

double radius(const tagSTREAMLINE_POINT& p, double c) { return std::hypot(p.x - c, p.y - c); }

// Lines come in pairs from one seed; every step moves half a flag cell along the larger wind
// component, downstream on the first half and upstream on the second.
void expect_steps_follow_wind(const tagSTREAMLINE_LAYER& layer, const Wind& w, int den) {
  ASSERT_EQ(layer.line_count % 2, 0);
  const double s = 0.5 / den;
  for (size_t h = 0; h < layer.lines.size(); ++h) {
    const auto& pts = layer.lines[h].points;
    ASSERT_FALSE(pts.empty());
    if (h % 2 == 1) {
      EXPECT_EQ(pts[0].x, layer.lines[h - 1].points[0].x);
      EXPECT_EQ(pts[0].y, layer.lines[h - 1].points[0].y);
    }
    const double sign = h % 2 == 0 ? 1 : -1;
    for (size_t p = 0; p + 1 < pts.size(); ++p) {
      // Only a point inside the grid's cells has a next one.
      ASSERT_TRUE(pts[p].x >= 0 && pts[p].x < w.nx - 1 && pts[p].y >= 0 && pts[p].y < w.ny - 1);
      double u, v;
      wind_at(w, pts[p].x, pts[p].y, u, v);
      const double scale = std::max(std::fabs(u), std::fabs(v));
      ASSERT_NEAR(pts[p + 1].x - pts[p].x, sign * u * s / scale, 1e-9) << "line " << h << " step " << p;
      ASSERT_NEAR(pts[p + 1].y - pts[p].y, sign * v * s / scale, 1e-9) << "line " << h << " step " << p;
    }
  }
}

// Arrows sit on the 21st, 42nd, ... step of a downstream half and on the 2nd, 23rd, ... step of
// an upstream half, in the order the lines were drawn, pointing downstream.
void expect_arrows_every_21_steps(const tagSTREAMLINE_LAYER& layer) {
  std::vector<tagSTREAMLINE_ARROW> expected;
  for (size_t h = 0; h < layer.lines.size(); ++h) {
    const auto& pts = layer.lines[h].points;
    const bool down = h % 2 == 0;
    for (size_t p = down ? 21 : 2; p < pts.size(); p += 21) {
      const auto& a = down ? pts[p - 1] : pts[p];
      const auto& b = down ? pts[p] : pts[p - 1];
      expected.push_back({a.x, a.y, b.x, b.y});
    }
  }
  ASSERT_EQ(layer.arrow_count, static_cast<int32_t>(expected.size()));
  for (size_t a = 0; a < expected.size(); ++a) {
    EXPECT_EQ(layer.arrows[a].x1, expected[a].x1) << "arrow " << a;
    EXPECT_EQ(layer.arrows[a].y1, expected[a].y1) << "arrow " << a;
    EXPECT_EQ(layer.arrows[a].x2, expected[a].x2) << "arrow " << a;
    EXPECT_EQ(layer.arrows[a].y2, expected[a].y2) << "arrow " << a;
  }
}

// A flag cell is marked when a line leaves it. No line leaves a cell another line has left
// (it would have had to enter a marked cell), and no seed has a marked cell within three.
void expect_lines_kept_apart(const tagSTREAMLINE_LAYER& layer, int nx, int ny, int den) {
  const int cols = den * nx, rows = den * ny;
  std::vector<char> marked(static_cast<size_t>(cols) * rows, 0);
  auto cell = [&](const tagSTREAMLINE_POINT& p) {
    return static_cast<int>(p.y * den) * cols + static_cast<int>(p.x * den);
  };
  for (size_t h = 0; h < layer.lines.size(); ++h) {
    const auto& pts = layer.lines[h].points;
    if (h % 2 == 0) {
      const int ci = static_cast<int>(std::lround(pts[0].x * den));
      const int cj = static_cast<int>(std::lround(pts[0].y * den));
      for (int j = std::max(0, cj - 3); j < std::min(rows, cj + 4); ++j)
        for (int i = std::max(0, ci - 3); i < std::min(cols, ci + 4); ++i)
          ASSERT_FALSE(marked[j * cols + i]) << "seed " << ci << "," << cj << " next to " << i << "," << j;
    }
    for (size_t p = 1; p + 1 < pts.size(); ++p) {
      const int k = cell(pts[p]);
      if (k == cell(pts[p + 1])) continue;
      ASSERT_FALSE(marked[k]) << "line " << h << " leaves an already marked cell";
      marked[k] = 1;
    }
  }
}

bool read_text_grid(const std::string& path, std::vector<double>& values, int& nx, int& ny) {
  std::ifstream in(path);
  std::string line, key;
  while (std::getline(in, line) && line.rfind('#', 0) == 0) {
  }
  std::istringstream header(line);
  header >> key >> nx >> key >> ny;
  values.resize(static_cast<size_t>(nx) * ny);
  for (double& x : values) in >> x;
  return static_cast<bool>(in);
}

struct FieldCase {
  const char* name;
  int density;
  Wind wind;
};

std::vector<FieldCase> smooth_fields() {
  return {
      {"uniform", 2, make_wind(20, 15, [](double, double, double& u, double& v) { u = 3, v = 1; })},
      {"rotation", 2, make_wind(41, 41, [](double x, double y, double& u, double& v) {
         u = -(y - 20), v = x - 20;
       })},
      {"sink", 3, make_wind(31, 31, [](double x, double y, double& u, double& v) {
         u = -(x - 15), v = -(y - 15);
       })},
      {"wave", 4, make_wind(50, 30, [](double x, double y, double& u, double& v) {
         u = 10 + 5 * std::sin(y / 4), v = 8 * std::cos(x / 5);
       })},
  };
}

void expect_well_formed(Wind& w, int den) {
  const tagSTREAMLINE_LAYER layer = trace(w, den);
  ASSERT_GT(layer.arrow_count, 0);
  EXPECT_EQ(layer.line_count, static_cast<int32_t>(layer.lines.size()));
  for (const auto& line : layer.lines)
    EXPECT_EQ(line.point_count, static_cast<int32_t>(line.points.size()));
  expect_steps_follow_wind(layer, w, den);
  expect_arrows_every_21_steps(layer);
  expect_lines_kept_apart(layer, w.nx, w.ny, den);
}

TEST(StreamlineTracer, StepsArrowsAndMarkingOnSmoothFields) {
  for (auto& c : smooth_fields()) {
    SCOPED_TRACE(c.name);
    expect_well_formed(c.wind, c.density);
  }
}

TEST(StreamlineTracer, StepsArrowsAndMarkingOnARealWindField) {
  TERVIK_REQUIRE_SHARED_DATA(u_path, "grids/derived_text/GFS_test_ugrd_500hPa.txt");
  TERVIK_REQUIRE_SHARED_DATA(v_path, "grids/derived_text/GFS_test_vgrd_500hPa.txt");
  Wind w;
  int nx2 = 0, ny2 = 0;
  ASSERT_TRUE(read_text_grid(u_path, w.u, w.nx, w.ny));
  ASSERT_TRUE(read_text_grid(v_path, w.v, nx2, ny2));
  ASSERT_EQ(w.nx, nx2);
  ASSERT_EQ(w.ny, ny2);
  for (int den = 1; den <= 4; ++den) {
    SCOPED_TRACE(den);
    expect_well_formed(w, den);
  }
}

TEST(StreamlineTracer, SolidBodyRotationGivesNearlyClosedCircles) {
  Wind w = make_wind(41, 41, [](double x, double y, double& u, double& v) {
    u = -(y - 20), v = x - 20;
  });
  const tagSTREAMLINE_LAYER layer = trace(w, 2);
  int circles = 0;
  for (size_t h = 0; h < layer.lines.size(); h += 2) {
    const auto& pts = layer.lines[h].points;
    const double r0 = radius(pts[0], 20);
    if (r0 < 3 || r0 > 18) continue;
    double swept = 0, drift = 0;
    for (size_t p = 1; p < pts.size(); ++p) {
      const double a0 = std::atan2(pts[p - 1].y - 20, pts[p - 1].x - 20);
      double da = std::atan2(pts[p].y - 20, pts[p].x - 20) - a0;
      if (da < -M_PI) da += 2 * M_PI;
      EXPECT_GT(da, 0) << "a downstream half turns counter-clockwise";
      swept += da;
      // Straight steps spiral slowly outwards: by about pi times the step length per turn.
      if (swept <= 2 * M_PI) drift = std::max(drift, std::fabs(radius(pts[p], 20) - r0));
    }
    EXPECT_LT(drift, 1.0) << "seed radius " << r0;
    EXPECT_GT(swept, 2 * M_PI) << "seed radius " << r0;
    ++circles;
  }
  EXPECT_GE(circles, 5);
}
bool calm_at(const Wind& w, const tagSTREAMLINE_POINT& p) {
  double u, v;
  wind_at(w, p.x, p.y, u, v);
  return std::fabs(u) < 0.1 && std::fabs(v) < 0.1;
}

TEST(StreamlineTracer, CalmWindStopsLines) {
  // A sink: the wind dies away towards the centre (15, 15).
  Wind sink = make_wind(31, 31, [](double x, double y, double& u, double& v) {
    u = -(x - 15), v = -(y - 15);
  });
  // Wind in the left half only; the right half is calm.
  Wind half = make_wind(20, 5, [](double x, double, double& u, double& v) {
    u = x <= 9 ? 1 : 0, v = 0;
  });
  for (Wind* w : {&sink, &half}) {
    const tagSTREAMLINE_LAYER layer = trace(*w, 3);
    int ended_calm = 0;
    for (size_t h = 0; h < layer.lines.size(); ++h) {
      const auto& pts = layer.lines[h].points;
      for (size_t p = 0; p + 1 < pts.size(); ++p)
        ASSERT_FALSE(calm_at(*w, pts[p])) << "line " << h << " steps on from a calm point";
      const auto& last = pts.back();
      if (last.x < w->nx - 1 && last.y < w->ny - 1 && calm_at(*w, last)) ++ended_calm;
      if (w == &sink && h % 2 == 0) {
        for (size_t p = 1; p < pts.size(); ++p)
          EXPECT_LT(radius(pts[p], 15), radius(pts[p - 1], 15)) << "line " << h;
      }
    }
    EXPECT_GT(ended_calm, 0);
  }
}

TEST(StreamlineTracer, MissingAndNonFiniteWindsStopLines) {
  struct Hole {
    const char* name;
    bool in_u;
    int i, j;  // j < 0: the whole column i
    double value;
  };
  const Hole holes[] = {{"u column undef", true, 10, -1, kUndef},
                        {"v point undef", false, 6, 3, kUndef},
                        {"v column NaN", false, 12, -1, kNaN},
                        {"u point infinite", true, 7, 4, HUGE_VAL}};
  for (const auto& hole : holes) {
    SCOPED_TRACE(hole.name);
    Wind w = make_wind(20, 8, [](double, double, double& u, double& v) { u = 1, v = 0.5; });
    for (int j = 0; j < w.ny; ++j)
      if (hole.j < 0 || j == hole.j) (hole.in_u ? w.u : w.v)[j * w.nx + hole.i] = hole.value;
    auto usable = [&](const tagSTREAMLINE_POINT& p) {
      const int n = static_cast<int>(p.y) * w.nx + static_cast<int>(p.x);
      for (int k : {n, n + 1, n + w.nx, n + w.nx + 1})
        if (!std::isfinite(w.u[k]) || !std::isfinite(w.v[k]) || w.u[k] == kUndef || w.v[k] == kUndef)
          return false;
      return true;
    };
    const tagSTREAMLINE_LAYER layer = trace(w, 2);
    int stopped = 0;
    for (const auto& line : layer.lines) {
      for (size_t p = 0; p + 1 < line.points.size(); ++p) ASSERT_TRUE(usable(line.points[p]));
      const auto& last = line.points.back();
      if (last.x < w.nx - 1 && last.y < w.ny - 1 && !usable(last)) ++stopped;
    }
    EXPECT_GT(stopped, 0);
  }
}

// Every coordinate of a layer, lines first, then arrows.
std::vector<double> flatten(const tagSTREAMLINE_LAYER& layer) {
  std::vector<double> all;
  for (const auto& line : layer.lines)
    for (const auto& p : line.points) all.insert(all.end(), {p.x, p.y});
  for (const auto& a : layer.arrows) all.insert(all.end(), {a.x1, a.y1, a.x2, a.y2});
  return all;
}

TEST(StreamlineTracer, DensitiesOutsideOneToFourTraceAsFour) {
  Wind w = make_wind(21, 17, [](double x, double y, double& u, double& v) {
    u = -(y - 8), v = x - 10;
  });
  const tagSTREAMLINE_LAYER four = trace(w, 4);
  for (int density : {0, 5, 12, -3, INT_MAX, INT_MIN}) {
    const tagSTREAMLINE_LAYER other = trace(w, density);
    EXPECT_EQ(other.line_count, four.line_count) << density;
    EXPECT_EQ(flatten(other), flatten(four)) << density;
  }
  for (int density : {1, 2, 3}) EXPECT_LT(trace(w, density).line_count, four.line_count);
}

TEST(StreamlineTracer, SuccessiveCallsAppendToOneLayer) {
  Wind w = make_wind(12, 9, [](double x, double, double& u, double& v) { u = 2, v = x - 6; });
  tagSTREAMLINE_LAYER layer;
  strmStreamlineBuilder builder(&layer);
  streamline_analysis_gx tracer(&builder);
  ASSERT_TRUE(tracer.create_streamline(w.u.data(), w.v.data(), 12, 9, 0, 0, 1, 1, kUndef, 2));
  const tagSTREAMLINE_LAYER once = layer;
  ASSERT_TRUE(tracer.create_streamline(w.u.data(), w.v.data(), 12, 9, 0, 0, 1, 1, kUndef, 2));
  tagSTREAMLINE_LAYER twice = once;
  twice.lines.insert(twice.lines.end(), once.lines.begin(), once.lines.end());
  twice.arrows.insert(twice.arrows.end(), once.arrows.begin(), once.arrows.end());
  EXPECT_EQ(layer.line_count, 2 * once.line_count);
  EXPECT_EQ(layer.arrow_count, 2 * once.arrow_count);
  EXPECT_EQ(flatten(layer), flatten(twice));
}

TEST(StreamlineTracer, FieldsWithoutUsableWindGiveOnePointLines) {
  struct Case {
    const char* name;
    int nx, ny;
    double value;
  };
  const Case cases[] = {{"all undef", 9, 7, kUndef}, {"all NaN", 9, 7, kNaN},
                        {"all infinite", 9, 7, -HUGE_VAL}, {"zero wind", 9, 7, 0.0},
                        {"calm", 9, 7, 0.09}, {"one column", 1, 6, 5.0}, {"one row", 6, 1, 5.0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const double value = c.value;
    Wind w = make_wind(c.nx, c.ny, [value](double, double, double& u, double& v) { u = v = value; });
    const tagSTREAMLINE_LAYER layer = trace(w, 2);
    // Nothing is ever marked, so every flag cell seeds a pair of one-point lines.
    EXPECT_EQ(layer.line_count, 2 * 4 * c.nx * c.ny);
    EXPECT_EQ(layer.arrow_count, 0);
    for (const auto& line : layer.lines) ASSERT_EQ(line.point_count, 1);
  }
}

TEST(StreamlineTracer, RejectsUnusableArgumentsWithoutReportingAnything) {
  std::vector<double> wind(16, 1.0);
  double* w = wind.data();
  struct Case {
    const char* name;
    double *u, *v;
    int nx, ny;
    const char* message;
  };
  const char* invalid = "Invalid wind grid for streamline function\n";
  const Case cases[] = {
      {"no columns", w, w, 0, 4, invalid},
      {"negative rows", w, w, 4, -4, invalid},
      {"null u", nullptr, w, 4, 4, invalid},
      {"null v", w, nullptr, 4, 4, invalid},
      {"flag grid too large", w, w, INT_MAX, INT_MAX,
       "Cannot allocate memory for streamline function\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    strmStreamlineBuilder builder(nullptr);
    streamline_analysis_gx tracer(&builder);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(tracer.create_streamline(c.u, c.v, c.nx, c.ny, 0, 0, 1, 1, kUndef, 4));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.message);
    EXPECT_EQ(builder.getLayer(), nullptr);
  }
  streamline_analysis_gx orphan(nullptr);
  testing::internal::CaptureStderr();
  EXPECT_FALSE(orphan.create_streamline(w, w, 4, 4, 0, 0, 1, 1, kUndef, 4));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "No builder for streamline function\n");
}

// Records the builder calls as text, in map coordinates.
class RecordingBuilder : public streamlineBuilder {
 public:
  std::vector<std::string> calls;
  void newLine() override { calls.push_back("newLine"); }
  void addLine() override { calls.push_back("addLine"); }
  void addPoint(double x, double y) override { calls.push_back(format("addPoint", {x, y})); }
  void addArrow(double x1, double y1, double x2, double y2) override {
    calls.push_back(format("addArrow", {x1, y1, x2, y2}));
  }
  static std::string format(const char* op, std::initializer_list<double> values) {
    std::ostringstream out;
    out << op;
    for (double v : values) out << ' ' << v;
    return out.str();
  }
};

TEST(StreamlineTracer, ReportsCallsInOrderOnAStraightChannel) {
  // 13 x 2 grid, density 1: one flag cell per grid cell, steps of half a grid length, and a
  // neighbourhood of three cells that covers both rows, so the first seed (0, 0) is the only
  // one with a clear neighbourhood. Map x = 100 + 0.25 gx, map y = 50 + 2 gy.
  auto x = [](double gx) { return 100 + 0.25 * gx; };
  for (double wind : {1.0, -1.0}) {
    SCOPED_TRACE(wind);
    std::vector<double> u(26, wind), v(26, 0.0);
    RecordingBuilder rec;
    streamline_analysis_gx tracer(&rec);
    EXPECT_FALSE(tracer.create_streamline(u.data(), v.data(), 13, 2, 100, 50, 0.25, 2, kUndef, 1))
        << "a builder without a layer";

    std::vector<std::string> expected;
    auto point = [&](double gx) { expected.push_back(RecordingBuilder::format("addPoint", {x(gx), 50})); };
    auto arrow = [&](double from, double to) {
      expected.push_back(RecordingBuilder::format("addArrow", {x(from), 50, x(to), 50}));
    };
    // The half that runs along the wind goes from 0 to the last column in 24 steps, with an
    // arrow on the 21st step (first half) or on the 2nd and 23rd (second half). The other
    // half steps off the grid at once (first half), or into the cell the first half has
    // marked on leaving it (second half): one point.
    expected.push_back("newLine");
    point(0);
    if (wind > 0) {
      for (int step = 1; step <= 24; ++step) {
        point(0.5 * step);
        if (step == 21) arrow(0.5 * (step - 1), 0.5 * step);
      }
      expected.insert(expected.end(), {"addLine", "newLine"});
      point(0);
    } else {
      point(-0.5);
      expected.insert(expected.end(), {"addLine", "newLine"});
      point(0);
      for (int step = 1; step <= 24; ++step) {
        point(0.5 * step);
        if (step == 2 || step == 23) arrow(0.5 * step, 0.5 * (step - 1));
      }
    }
    expected.push_back("addLine");
    EXPECT_EQ(rec.calls, expected);
  }
}
TEST(StreamlineTracer, SwingingWithinOneCellEndsAtTheEleventhStep) {
  // The wind turns from +1 to -3 between columns 5 and 6, so a line from the left swings
  // between x = 5 and x = 5.5, both in flag cell 5 (density 1); the eleventh step in the cell
  // ends it. Nothing else is seeded on this 8 x 2 grid.
  Wind w = make_wind(8, 2, [](double x, double, double& u, double& v) { u = x <= 5 ? 1 : -3, v = 0; });
  const tagSTREAMLINE_LAYER layer = trace(w, 1);
  ASSERT_EQ(layer.line_count, 2);
  std::vector<double> expected;
  for (int step = 0; step <= 10; ++step) expected.push_back(0.5 * step);
  for (int step = 11; step <= 20; ++step) expected.push_back(step % 2 ? 5.5 : 5.0);
  std::vector<double> xs;
  for (const auto& p : layer.lines[0].points) xs.push_back(p.x);
  EXPECT_EQ(xs, expected);
  EXPECT_EQ(layer.lines[1].point_count, 1);
}
}  // namespace
