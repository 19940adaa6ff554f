// Thermodynamic primitives against tabulated vapour pressures and Bolton's LCL, against
// each other (round trips, conserved energies) and against the bisections' lattices.

#include <gtest/gtest.h>

#include <cmath>

#include <tervik/sounding.h>

namespace {

TEST(SaturationVapourPressure, MatchesTabulatedValuesOverWaterAndIce) {
  // hPa over water at t >= 0 and over ice below, from the psychrometric tables; the Magnus
  // fits drift to two percent at -40. Over water -10 would give 2.86, over ice 2.60.
  struct Case { double t, e, rel_tol; };
  const Case cases[] = {{0.0, 6.112, 0.005},  {10.0, 12.28, 0.005}, {30.0, 42.47, 0.005},
                        {-10.0, 2.60, 0.005}, {-20.0, 1.032, 0.005}, {-40.0, 0.1285, 0.02}};
  for (const auto& c : cases) EXPECT_NEAR(E(c.t), c.e, c.rel_tol * c.e) << c.t;
}

TEST(LiftingCondensationLevel, MoistureCapacityCrossesOnTheTenthHectopascalLattice) {
  struct Case { double p, t, td; };
  const Case cases[] = {{1000.0, 30.0, 20.0}, {1013.2, 25.0, 5.0}, {850.0, 10.0, -15.0},
                        {700.0, -5.0, -6.0}, {950.0, 35.0, -20.0}};
  for (const auto& c : cases) {
    double p_lcl = 0, t_lcl = 0;
    ASSERT_TRUE(pt_LCL(c.p, c.t, c.td, &p_lcl, &t_lcl));
    const double steps = (c.p - p_lcl) / 0.1;
    EXPECT_TRUE(steps >= 1.0 && std::fabs(steps - std::round(steps)) < 1e-6) << c.t << c.td;
    // On the dry adiabat, saturated at the LCL and not yet one step below it.
    const double th = theta(c.p, c.t), q0 = q(c.p, c.td);
    EXPECT_NEAR(t_lcl, t_dry_adiabat(p_lcl, th), 1e-9);
    EXPECT_LT(q(p_lcl, t_lcl), q0);
    EXPECT_GE(q(p_lcl + 0.1, t_dry_adiabat(p_lcl + 0.1, th)), q0 * (1 - 1e-12));
    // Bolton's (1980) fit assumes saturation over water: compare only above 0 deg C.
    if (c.td < 0.0 || t_lcl < 0.0) continue;
    const double T = c.t + 273.15, Tdk = c.td + 273.15;
    const double bolton = 1.0 / (1.0 / (Tdk - 56.0) + std::log(T / Tdk) / 800.0) + 56.0;
    EXPECT_NEAR(t_lcl + 273.15, bolton, 0.4) << c.t << " " << c.td;
  }
  double p = -1, t = -1;
  ASSERT_TRUE(pt_LCL(850.0, 12.5, 12.5, &p, &t));
  EXPECT_TRUE(p == 850.0 && t == 12.5);  // saturated air is its own LCL
  // The Poisson exponent is 0.286, not 0.2857.
  EXPECT_NEAR(theta(500.0, -20.0), 253.15 * std::pow(2.0, 0.286) - 273.15, 1e-12);
}

TEST(PseudoAdiabat, RoundTripsWithinTheBisectionAndTakesOverAtTheLcl) {
  double p_lcl, t_lcl;
  pt_LCL(1000.0, 30.0, 20.0, &p_lcl, &t_lcl);
  EXPECT_EQ(theta_se(1000.0, 30.0, 20.0), theta_se_s(p_lcl, t_lcl));
  for (double p : {1000.0, 800.0, 500.0, 300.0}) {
    for (double t : {-40.0, -10.0, 0.0, 15.0, 28.0}) {
      EXPECT_NEAR(t_wet_adiabat(p, theta_se_s(p, t)), t, 200.0 / 4096.0) << p << " " << t;
    }
  }
  // Dry below the LCL, the pseudo-adiabat through it above.
  EXPECT_NEAR(t_lift2p(1000.0, 30.0, 20.0, p_lcl + 0.05), t_dry_adiabat(p_lcl + 0.05, 30.0),
              1e-11);
  EXPECT_EQ(t_lift2p(1000.0, 30.0, 20.0, 500.0), t_wet_adiabat(500.0, theta_se_s(p_lcl, t_lcl)));
}

TEST(Bisections, ElevenHalvingsForTheAdiabatFifteenForIsoHumidity) {
  // A wet-adiabat result is the midpoint of the eleventh interval of [-100, 100]: an odd
  // multiple of 200 / 2^12 from -100, whatever the target, with no out-of-range sentinel.
  const double step = 200.0 / 4096.0;
  for (double target : {-300.0, -20.0, 0.0, 35.0, 80.0, 1e6}) {
    const double k = (t_wet_adiabat(850.0, target) + 100.0) / step;
    EXPECT_EQ(std::fmod(k, 2.0), 1.0) << target;  // an odd integer
  }
  EXPECT_EQ(t_wet_adiabat(850.0, 1e6), 100.0 - step);
  // Below E(0) hPa the dry-air pressure is negative: NaN comparisons move the lower end.
  EXPECT_EQ(t_wet_adiabat(6.1, 40.0), 100.0 - step);
  const double k = (t_iso_humidity(850.0, 0.004) + 100.0) / (200.0 / 65536.0);
  EXPECT_EQ(std::fmod(k, 2.0), 1.0);
  for (double t : {-60.0, -25.0, -0.5, 0.5, 22.0})
    EXPECT_NEAR(t_iso_humidity(700.0, q(700.0, t)), t, 0.01) << t;
  EXPECT_EQ(t_iso_humidity(2000.0, q(2000.0, 100.0) * 1.01), 9999.0);  // beyond 100 deg C
}

TEST(EnergyTemperatures, ConservedByAnUnsaturatedParcelRisingDryAdiabatically) {
  // Ground air lifted to 850 hPa on its dry adiabat (height from the hypsometric equation)
  // keeps its dry static energy (Td) and, with its humidity, its moist one (Tsigma).
  const double p1 = 1000.0, t1 = 24.0, td1 = 12.0, z1 = 110.0, p2 = 850.0;
  const double t2 = t_dry_adiabat(p2, theta(p1, t1));
  const double log_mean = (t1 - t2) / std::log((t1 + 273.15) / (t2 + 273.15));
  const double z2 = z1 + 0.286 * 1004.842 / 9.81 * log_mean * std::log(p1 / p2);
  EXPECT_NEAR(Td(p2, t2, z2, 0.0), Td(p1, t1, z1, 0.0), 1e-9);
  const double td2 = t_iso_humidity(p2, q(p1, td1));
  EXPECT_NEAR(Tsigma(p2, t2, td2, z2), Tsigma(p1, t1, td1, z1), 0.01);
  // cp times 273.15 is the machine product; the decimal literal is one ulp higher.
  EXPECT_EQ(Esd(0.0, 0.0), 1004.842 * 273.15);
  EXPECT_NE(Esd(0.0, 0.0), 274472.5923);
}

TEST(WindDirection, MeteorologicalConventionWithTheTruncatedDegreeFactor) {
  struct Case { double u, v, speed, dir; };
  const Case cases[] = {
      {0, -1, 1, 360}, {0, 1, 1, 180}, {-1, 0, 1, 90}, {1, 0, 1, 270}, {0, 0, 0, 180}};
  for (const auto& c : cases) {
    double speed = -1, dir = -1;
    EXPECT_EQ(uv2magdir(c.u, c.v, &speed, &dir), c.speed);
    EXPECT_DOUBLE_EQ(speed, c.speed) << c.u << "," << c.v;
    EXPECT_DOUBLE_EQ(dir, c.dir) << c.u << "," << c.v;
  }
  EXPECT_EQ(uv2magdir(3.0, 4.0, nullptr, nullptr), 5.0);
  // 180 * 0.017453292519943 falls 5.3e-14 short of pi: a northerly keeps an eastward part.
  EXPECT_NEAR(u(1.0, 0.0), -(M_PI - 180.0 * 0.017453292519943), 1e-15);
  for (int d = 0; d <= 360; ++d) {
    double s = -1, dir = -1;
    uv2magdir(u(7.0, d), v(7.0, d), &s, &dir);
    EXPECT_NEAR(s, 7.0, 1e-12);
    const double off = std::fabs(dir - d);  // 0 and 360 are the same wind
    EXPECT_TRUE(std::fmin(off, 360.0 - off) < 1e-9 && dir >= 0.0 && dir <= 360.0) << d;
  }
}

}  // namespace
