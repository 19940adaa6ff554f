#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <tervik/streamline.h>

#include "support/paths.h"

namespace {

constexpr double kUndef = 9999.0;

struct Wind {
  int nx = 0, ny = 0;
  std::vector<double> u, v;
};

struct Uv {
  double u, v;
};

Wind make_wind(int nx, int ny, const std::function<Uv(double, double)>& f) {
  Wind w{nx, ny, {}, {}};
  for (int k = 0; k < nx * ny; ++k) {
    const Uv uv = f(k % nx, k / nx);
    w.u.push_back(uv.u);
    w.v.push_back(uv.v);
  }
  return w;
}

// Traces on the map x = gx/4, y = -2 gy and returns the layer in grid coordinates (scales by
// powers of two keep the round trip exact, so points on cell borders stay on them).
tagSTREAMLINE_LAYER trace(Wind& w, int density) {
  tagSTREAMLINE_LAYER layer;
  strmStreamlineBuilder builder(&layer);
  streamline_analysis_gx tracer(&builder);
  EXPECT_TRUE(tracer.create_streamline(w.u.data(), w.v.data(), w.nx, w.ny, 0, 0, 0.25, -2,
                                       kUndef, density));
  for (auto& line : layer.lines)
    for (auto& p : line.points) p = {p.x * 4, p.y / -2};
  for (auto& a : layer.arrows)
    a = {a.x1 * 4, a.y1 / -2, a.x2 * 4, a.y2 / -2};
  return layer;
}

// The wind at a point, interpolated independently of the tracer.
Uv wind_at(const Wind& w, double x, double y) {
  const int i = static_cast<int>(x), j = static_cast<int>(y), n = j * w.nx + i;
  const double fx = x - i, fy = y - j;
  auto at = [&](const std::vector<double>& c) {
    return (1 - fx) * (1 - fy) * c[n] + fx * (1 - fy) * c[n + 1] + (1 - fx) * fy * c[n + w.nx] +
           fx * fy * c[n + w.nx + 1];
  };
  return {at(w.u), at(w.v)};
}

// Lines come in pairs from one seed; every step moves half a flag cell along the larger wind
// component, downstream on the first half and upstream on the second. Only a point inside
// the grid's cells, with four usable corners, has a next one.
void expect_steps_follow_wind(const tagSTREAMLINE_LAYER& layer, const Wind& w, int den) {
  ASSERT_EQ(layer.line_count % 2, 0);
  for (size_t h = 0; h < layer.lines.size(); ++h) {
    const auto& pts = layer.lines[h].points;
    ASSERT_EQ(layer.lines[h].point_count, static_cast<int32_t>(pts.size()));
    ASSERT_FALSE(pts.empty());
    if (h % 2 == 1) {
      EXPECT_EQ(pts[0].x, layer.lines[h - 1].points[0].x);
      EXPECT_EQ(pts[0].y, layer.lines[h - 1].points[0].y);
    }
    const double step = (h % 2 == 0 ? 0.5 : -0.5) / den;
    for (size_t p = 0; p + 1 < pts.size(); ++p) {
      ASSERT_TRUE(pts[p].x >= 0 && pts[p].x < w.nx - 1 && pts[p].y >= 0 && pts[p].y < w.ny - 1);
      const auto [u, v] = wind_at(w, pts[p].x, pts[p].y);
      ASSERT_TRUE(std::fabs(u) < 1000 && std::fabs(v) < 1000)  // false for NaN too
          << "line " << h << " steps on from a missing corner";
      const double scale = std::max(std::fabs(u), std::fabs(v));
      ASSERT_GE(scale, 0.1) << "line " << h << " steps on from a calm point";
      ASSERT_NEAR(pts[p + 1].x - pts[p].x, step * u / scale, 1e-9) << "line " << h << " at " << p;
      ASSERT_NEAR(pts[p + 1].y - pts[p].y, step * v / scale, 1e-9) << "line " << h << " at " << p;
    }
  }
}

// Arrows sit on the 21st, 42nd, ... step of a downstream half and on the 2nd, 23rd, ... step of
// an upstream half, in the order the lines were drawn, pointing downstream.
void expect_arrows_every_21_steps(const tagSTREAMLINE_LAYER& layer) {
  std::vector<double> expected, got;
  for (size_t h = 0; h < layer.lines.size(); ++h) {
    const auto& pts = layer.lines[h].points;
    const bool down = h % 2 == 0;
    for (size_t p = down ? 21 : 2; p < pts.size(); p += 21) {
      const auto& a = down ? pts[p - 1] : pts[p];
      const auto& b = down ? pts[p] : pts[p - 1];
      expected.insert(expected.end(), {a.x, a.y, b.x, b.y});
    }
  }
  ASSERT_EQ(layer.arrow_count, static_cast<int32_t>(layer.arrows.size()));
  for (const auto& a : layer.arrows) got.insert(got.end(), {a.x1, a.y1, a.x2, a.y2});
  EXPECT_EQ(got, expected);
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
          ASSERT_FALSE(marked[j * cols + i]) << "seed " << ci << "," << cj << " by " << i;
    }
    for (size_t p = 1; p + 1 < pts.size(); ++p) {
      const int k = cell(pts[p]);
      if (k == cell(pts[p + 1])) continue;
      ASSERT_FALSE(marked[k]) << "line " << h << " leaves an already marked cell";
      marked[k] = 1;
    }
  }
}

void expect_well_formed(Wind& w, int den) {
  SCOPED_TRACE(den);
  const tagSTREAMLINE_LAYER layer = trace(w, den);
  ASSERT_GT(layer.arrow_count, 0);
  EXPECT_EQ(layer.line_count, static_cast<int32_t>(layer.lines.size()));
  expect_steps_follow_wind(layer, w, den);
  expect_arrows_every_21_steps(layer);
  expect_lines_kept_apart(layer, w.nx, w.ny, den);
}

TEST(StreamlineTracer, StepsArrowsAndMarkingOnSmoothFields) {
  struct Field {
    const char* name;
    int density;
    Wind wind;
  };
  Field fields[] = {
      {"uniform", 2, make_wind(20, 15, [](double, double) { return Uv{3, 1}; })},
      {"rotation", 2, make_wind(41, 41, [](double x, double y) { return Uv{20 - y, x - 20}; })},
      {"calm sink", 3, make_wind(31, 31, [](double x, double y) { return Uv{15 - x, 15 - y}; })},
      {"wave", 4, make_wind(50, 30, [](double x, double y) {
         return Uv{10 + 5 * std::sin(y / 4), 8 * std::cos(x / 5)};
       })},
      {"missing and non-finite winds", 2, make_wind(30, 20, [](double x, double y) {
         return Uv{x == 10 ? kUndef : x == 20 && y == 5 ? HUGE_VAL : 1,
                   x == 15 && y > 3 ? NAN : 0.5 + 0.05 * y};
       })},
  };
  for (auto& f : fields) {
    SCOPED_TRACE(f.name);
    expect_well_formed(f.wind, f.density);
  }
}

bool read_text_grid(const std::string& path, std::vector<double>& values, int& nx, int& ny) {
  std::ifstream in(path);
  std::string key;
  in.ignore(1000, '\n').ignore(1000, '\n');  // two comment lines
  in >> key >> nx >> key >> ny;
  in.ignore(1000, '\n');  // the rest of the header
  values.resize(static_cast<size_t>(nx) * ny);
  for (double& x : values) in >> x;
  return static_cast<bool>(in);
}

TEST(StreamlineTracer, StepsArrowsAndMarkingOnARealWindField) {
  TERVIK_REQUIRE_SHARED_DATA(u_path, "grids/derived_text/GFS_test_ugrd_500hPa.txt");
  TERVIK_REQUIRE_SHARED_DATA(v_path, "grids/derived_text/GFS_test_vgrd_500hPa.txt");
  Wind w;
  int nx = 0, ny = 0;
  ASSERT_TRUE(read_text_grid(u_path, w.u, w.nx, w.ny));
  ASSERT_TRUE(read_text_grid(v_path, w.v, nx, ny));
  ASSERT_TRUE(nx == w.nx && ny == w.ny);
  for (int den = 1; den <= 4; ++den) expect_well_formed(w, den);
}

TEST(StreamlineTracer, DensitiesOutsideOneToFourTraceAsFour) {
  Wind w = make_wind(21, 17, [](double x, double y) { return Uv{8 - y, x - 10}; });
  const tagSTREAMLINE_LAYER four = trace(w, 4);
  for (int density : {0, 5, -3, INT_MAX, INT_MIN}) {
    const tagSTREAMLINE_LAYER other = trace(w, density);
    EXPECT_EQ(other.line_count, four.line_count) << density;
    EXPECT_EQ(other.arrow_count, four.arrow_count) << density;
  }
}

TEST(StreamlineTracer, SwingingWithinOneCellEndsAtTheEleventhStep) {
  // The wind turns from +1 to -3 between columns 5 and 6, so a line from the left swings
  // between x = 5 and x = 5.5, both in flag cell 5 (density 1); the eleventh step in the cell
  // ends it. Nothing else is seeded on this 8 x 2 grid.
  Wind w = make_wind(8, 2, [](double x, double) { return Uv{x <= 5 ? 1.0 : -3.0, 0}; });
  const tagSTREAMLINE_LAYER layer = trace(w, 1);
  ASSERT_EQ(layer.line_count, 2);
  std::vector<double> expected, xs;
  for (int step = 0; step <= 20; ++step)
    expected.push_back(step <= 10 ? 0.5 * step : step % 2 ? 5.5 : 5.0);
  for (const auto& p : layer.lines[0].points) xs.push_back(p.x);
  EXPECT_EQ(xs, expected);
  EXPECT_EQ(layer.lines[1].point_count, 1);
}

TEST(StreamlineTracer, RejectsUnusableArgumentsWithoutReportingAnything) {
  std::vector<double> wind(16, 1.0);
  double* w = wind.data();
  const char* invalid = "Invalid wind grid for streamline function\n";
  struct Case {
    const char* name;
    double *u, *v;
    int nx, ny;
    bool builder;
    const char* message;
  };
  const Case cases[] = {
      {"no columns", w, w, 0, 4, true, invalid},
      {"negative rows", w, w, 4, -4, true, invalid},
      {"null u", nullptr, w, 4, 4, true, invalid},
      {"null v", w, nullptr, 4, 4, true, invalid},
      {"no builder", w, w, 4, 4, false, "No builder for streamline function\n"},
      {"flag grid too large", w, w, INT_MAX, INT_MAX, true,
       "Cannot allocate memory for streamline function\n"},
  };
  for (const auto& c : cases) {
    strmStreamlineBuilder builder(nullptr);
    streamline_analysis_gx tracer(c.builder ? &builder : nullptr);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(tracer.create_streamline(c.u, c.v, c.nx, c.ny, 0, 0, 1, 1, kUndef, 4))
        << c.name;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.message) << c.name;
    EXPECT_EQ(builder.getLayer(), nullptr) << c.name;
  }
}

}  // namespace
