// Thermodynamic primitives checked against values known outside this library (tabulated
// vapour pressures, the Bolton LCL temperature), against each other (round trips, the
// definitions of humidity and potential temperature) and against the bisections' lattices.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <tervik/sounding.h>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Temperature (deg C) at p of a saturated parcel lifted from (p0, t0), by midpoint
// integration of dT/dp = (Rd T + L r) / p / (cp + L^2 r eps / (Rd T^2)) in 0.5 hPa steps.
double textbook_moist_adiabat(double p0, double t0, double p) {
  const double rd = 287.04, cp = 1005.7, lv = 2.501e6, eps = 0.622;
  auto slope = [&](double pp, double T) {
    const double tc = T - 273.15;
    const double es = 6.112 * std::exp(17.67 * tc / (tc + 243.5));
    const double r = eps * es / (pp - es);
    return (rd * T + lv * r) / pp / (cp + lv * lv * r * eps / (rd * T * T));
  };
  double T = t0 + 273.15, pp = p0;
  const double dp = -0.5;
  while (pp + dp >= p - 1e-9) {
    const double mid = T + 0.5 * dp * slope(pp, T);
    T += dp * slope(pp + 0.5 * dp, mid);
    pp += dp;
  }
  return T - 273.15;
}

TEST(SaturationVapourPressure, MatchesTabulatedValuesOverWaterAndIce) {
  // Saturation vapour pressure (hPa) over water at t >= 0 and over ice below, from the
  // standard psychrometric tables. The Magnus fits agree to half a percent down to
  // -20 deg C and drift to two percent at -40.
  struct Case { double t, e, rel_tol; };
  const Case cases[] = {{0.0, 6.112, 0.005},   {10.0, 12.28, 0.005}, {20.0, 23.39, 0.005},
                        {30.0, 42.47, 0.005},  {-10.0, 2.60, 0.005}, {-20.0, 1.032, 0.005},
                        {-40.0, 0.1285, 0.02}};
  for (const auto& c : cases) EXPECT_NEAR(E(c.t), c.e, c.rel_tol * c.e) << c.t;
}

TEST(SaturationVapourPressure, ZeroIsWaterAndJustBelowIsIce) {
  EXPECT_EQ(E(0.0), 6.112);
  // Over water at -10 the table gives 2.86 hPa, over ice 2.60: the branch is visible.
  EXPECT_LT(E(-10.0), 2.7);
  // Just below zero the ice form takes over with its own exponent 9.5 / 265.5 per degree,
  // steeper than water's 7.5 / 237.3.
  const double slope_below = (E(0.0) - E(-1e-4)) / 1e-4;
  const double slope_above = (E(1e-4) - E(0.0)) / 1e-4;
  EXPECT_GT(slope_below, slope_above);
  EXPECT_NEAR(slope_below, 6.112 * std::log(10.0) * 9.5 / 265.5, 1e-3);
}

TEST(SpecificHumidity, IsMixingRatioOverOnePlusMixingRatio) {
  for (double p : {1000.0, 850.0, 500.0, 200.0}) {
    for (double t : {-40.0, -5.0, 0.0, 15.0, 30.0}) {
      const double e = E(t);
      const double w = 0.622 * e / (p - e);  // mixing ratio, kg per kg of dry air
      EXPECT_NEAR(q(p, t), w / (1.0 + w), 1e-15) << p << " " << t;
      // the virtual temperature of that saturated air
      EXPECT_NEAR((Tv(p, t) + 273.15) / (t + 273.15), 1.0 + 0.6077 * q(p, t), 1e-14);
    }
  }
}

TEST(PotentialTemperature, ReferenceLevelAndDryAdiabatRoundTrip) {
  for (double t : {-60.0, -10.0, 0.0, 25.0}) EXPECT_NEAR(theta(1000.0, t), t, 1e-12);
  // -20 deg C at 500 hPa: 253.15 K * 2^0.286
  EXPECT_NEAR(theta(500.0, -20.0), 253.15 * std::pow(2.0, 0.286) - 273.15, 1e-12);
  for (double p : {1050.0, 700.0, 300.0, 50.0}) {
    for (double t : {-70.0, -20.0, 10.0, 35.0}) {
      EXPECT_NEAR(t_dry_adiabat(p, theta(p, t)), t, 1e-11) << p << " " << t;
      EXPECT_NEAR(q_dry_adiabat(p, theta(p, t)), q(p, t), 1e-15);
      EXPECT_NEAR(theta_v(p, t), theta(p, Tv(p, t)), 1e-11);
    }
  }
}

TEST(LiftingCondensationLevel, SaturatedAirIsItsOwnLcl) {
  double p = -1, t = -1;
  ASSERT_TRUE(pt_LCL(850.0, 12.5, 12.5, &p, &t));
  EXPECT_EQ(p, 850.0);
  EXPECT_EQ(t, 12.5);
  // supersaturated input: the first step already finds less capacity than moisture
  ASSERT_TRUE(pt_LCL(850.0, 12.5, 14.0, &p, &t));
  EXPECT_EQ(p, 850.0);
  EXPECT_NEAR(t, 12.5, 1e-12);
}

TEST(LiftingCondensationLevel, MoistureCapacityCrossesOnTheTenthHectopascalLattice) {
  struct Case { double p, t, td; };
  const Case cases[] = {{1000.0, 30.0, 20.0}, {1013.2, 25.0, 5.0}, {850.0, 10.0, -15.0},
                        {700.0, -5.0, -6.0}, {950.0, 35.0, -20.0}};
  for (const auto& c : cases) {
    double p_lcl = 0, t_lcl = 0;
    ASSERT_TRUE(pt_LCL(c.p, c.t, c.td, &p_lcl, &t_lcl));
    const double steps = (c.p - p_lcl) / 0.1;
    EXPECT_NEAR(steps, std::round(steps), 1e-6) << c.t << " " << c.td;
    EXPECT_GE(steps, 1.0);
    // On the parcel's dry adiabat, with its specific humidity q(p, td): saturated at the
    // LCL, not yet one step below it.
    const double th = theta(c.p, c.t);
    const double q0 = q(c.p, c.td);
    EXPECT_NEAR(t_lcl, t_dry_adiabat(p_lcl, th), 1e-9);
    EXPECT_LT(q(p_lcl, t_lcl), q0);
    EXPECT_GE(q(p_lcl + 0.1, t_dry_adiabat(p_lcl + 0.1, th)), q0 * (1 - 1e-12));
    // Bolton's (1980) fit for the LCL temperature in kelvin, a formula of its own. It
    // assumes saturation over water, so it applies where both td and the LCL are above
    // 0 deg C; 0.4 K covers the fit's error and the slightly different Poisson exponent.
    if (c.td < 0.0 || t_lcl < 0.0) continue;
    const double T = c.t + 273.15, Tdk = c.td + 273.15;
    const double bolton = 1.0 / (1.0 / (Tdk - 56.0) + std::log(T / Tdk) / 800.0) + 56.0;
    EXPECT_NEAR(t_lcl + 273.15, bolton, 0.4) << c.t << " " << c.td;
  }
}

TEST(LiftingCondensationLevel, BadInputEndsQuickly) {
  double p = 7, t = 7;
  EXPECT_FALSE(pt_LCL(1000.0, 20.0, 10.0, nullptr, &t));
  EXPECT_FALSE(pt_LCL(1000.0, 20.0, 10.0, &p, nullptr));
  // a start where 0.1 hPa steps vanish in rounding is refused, outputs untouched
  EXPECT_FALSE(pt_LCL(1e300, 20.0, 10.0, &p, &t));
  EXPECT_FALSE(pt_LCL(std::numeric_limits<double>::infinity(), 20.0, 10.0, &p, &t));
  EXPECT_EQ(p, 7.0);
  EXPECT_EQ(t, 7.0);
  EXPECT_EQ(theta_se(1e300, 20.0, 10.0), 9999.0);
  EXPECT_EQ(t_lift2p(1e300, 20.0, 10.0, 500.0), 9999.0);
  // zero, negative and NaN pressures stop the search at the first comparison
  for (double bad : {0.0, -50.0, kNaN}) {
    ASSERT_TRUE(pt_LCL(bad, 20.0, 10.0, &p, &t));
    EXPECT_TRUE(std::isnan(t)) << bad;
  }
  // a NaN dew point leaves no moisture to compare with
  ASSERT_TRUE(pt_LCL(900.0, 20.0, kNaN, &p, &t));
  EXPECT_EQ(p, 900.0);
}

TEST(EquivalentPotentialTemperature, ThroughTheLclAndConservedOnThePseudoAdiabat) {
  double p_lcl, t_lcl;
  pt_LCL(1000.0, 30.0, 20.0, &p_lcl, &t_lcl);
  EXPECT_EQ(theta_se(1000.0, 30.0, 20.0), theta_se_s(p_lcl, t_lcl));
  EXPECT_EQ(theta_se(700.0, 3.0, 3.0), theta_se_s(700.0, 3.0));
  EXPECT_EQ(theta_w(700.0, 3.0), theta_se_s(700.0, 3.0));
  // Very cold air holds almost no vapour: the value approaches the dry potential temperature.
  EXPECT_NEAR(theta_se_s(200.0, -80.0), theta(200.0, -80.0), 0.01);
  // Warm saturated air at 1000 hPa: theta_se is t plus a latent term L q / cp (~35 K at
  // 20 deg C), give or take the dry-air partial pressure.
  const double lq = q(1000.0, 20.0) * 2.501e6 / 1004.842;
  EXPECT_NEAR(theta_se_s(1000.0, 20.0), 20.0 + lq, 0.15 * lq);
  // Following the pseudo-adiabat and coming back gives the start within the bisection's
  // half-bracket (200 / 2^12 deg C).
  for (double p : {1000.0, 800.0, 500.0, 300.0}) {
    for (double t : {-40.0, -10.0, 0.0, 15.0, 28.0}) {
      EXPECT_NEAR(t_wet_adiabat(p, theta_se_s(p, t)), t, 200.0 / 4096.0) << p << " " << t;
    }
  }
}

TEST(WetAdiabat, ElevenHalvingsWhateverTheTarget) {
  // Every result is a midpoint of the eleventh interval: an odd multiple of 200 / 2^12.
  const double step = 200.0 / 4096.0;
  for (double target : {-300.0, -20.0, 0.0, 35.0, 80.0, 1e6}) {
    const double r = t_wet_adiabat(850.0, target);
    const double k = (r + 100.0) / step;
    EXPECT_EQ(k, std::round(k)) << target;
    EXPECT_EQ(std::fmod(k, 2.0), 1.0) << target;
  }
  // Out of the bracket: the last midpoint next to its end, no sentinel.
  EXPECT_EQ(t_wet_adiabat(850.0, 1e6), 100.0 - step);
  EXPECT_EQ(t_wet_adiabat(850.0, -1e6), -100.0 + step);
  // Below E(0) = 6.112 hPa the dry-air pressure p - E of the first trial is negative; the
  // NaN comparison moves the lower end every time and the warm end comes out.
  EXPECT_EQ(t_wet_adiabat(6.1, 40.0), 100.0 - step);
  EXPECT_LT(t_wet_adiabat(6.2, 40.0), -90.0);
}

TEST(IsoHumidity, InvertsTheSaturationHumidityAndRejectsTheUnreachable) {
  for (double p : {1000.0, 700.0, 400.0}) {
    for (double t : {-60.0, -25.0, -0.5, 0.5, 22.0}) {
      EXPECT_NEAR(t_iso_humidity(p, q(p, t)), t, 0.01) << p << " " << t;
    }
  }
  EXPECT_EQ(t_iso_humidity(1000.0, 0.0), 9999.0);
  // more vapour than air at 100 deg C can hold (E(100) is about 1020 hPa)
  EXPECT_EQ(t_iso_humidity(2000.0, q(2000.0, 100.0) * 1.01), 9999.0);
  // fifteen halvings of 200: the midpoint of the last bracket, an odd multiple of 200 / 2^16
  const double k = (t_iso_humidity(850.0, 0.004) + 100.0) / (200.0 / 65536.0);
  EXPECT_EQ(k, std::round(k));
  EXPECT_EQ(std::fmod(k, 2.0), 1.0);
}

TEST(LiftedParcel, DryBelowTheLclMoistFromIt) {
  double p_lcl, t_lcl;
  pt_LCL(1000.0, 30.0, 20.0, &p_lcl, &t_lcl);
  // below the LCL: the dry adiabat through the start
  EXPECT_NEAR(t_lift2p(1000.0, 30.0, 20.0, p_lcl + 0.05), t_dry_adiabat(p_lcl + 0.05, 30.0),
              1e-11);
  // at the LCL and above: the pseudo-adiabat through it
  for (double p : {p_lcl, 700.0, 500.0}) {
    EXPECT_EQ(t_lift2p(1000.0, 30.0, 20.0, p), t_wet_adiabat(p, theta_se_s(p_lcl, t_lcl)));
  }
  // A saturated parcel integrated up the textbook moist-adiabatic lapse rate (Bolton's
  // vapour pressure, mixing ratios, Rd/cp = 0.2857). The constants differ a little from the
  // library's, so agreement within 1 K is what to expect.
  for (double t0 : {10.0, 20.0, 26.0}) {
    for (double p : {700.0, 500.0, 400.0}) {
      EXPECT_NEAR(t_lift2p(1000.0, t0, t0, p), textbook_moist_adiabat(1000.0, t0, p), 1.0)
          << t0 << " " << p;
    }
  }
}

TEST(EnergyTemperatures, ConservedByAnUnsaturatedParcelRisingDryAdiabatically) {
  // Lift air from the ground to 850 hPa on its dry adiabat, its height from the
  // hypsometric equation with Rd = 0.286 cp and the log-mean temperature of the layer.
  // Dry static energy (Td without wind) is conserved, and with the humidity kept, so is
  // the moist static energy (Tsigma); the dew point aloft comes from t_iso_humidity
  // (0.01 K).
  const double p1 = 1000.0, t1 = 24.0, td1 = 12.0, z1 = 110.0, p2 = 850.0;
  const double t2 = t_dry_adiabat(p2, theta(p1, t1));
  const double T1 = t1 + 273.15, T2 = t2 + 273.15;
  const double log_mean = (T1 - T2) / std::log(T1 / T2);
  const double z2 = z1 + 0.286 * 1004.842 / 9.81 * log_mean * std::log(p1 / p2);
  EXPECT_NEAR(Td(p2, t2, z2, 0.0), Td(p1, t1, z1, 0.0), 1e-9);
  const double td2 = t_iso_humidity(p2, q(p1, td1));
  EXPECT_NEAR(Tsigma(p2, t2, td2, z2), Tsigma(p1, t1, td1, z1), 0.01);
  // Saturated at t, the dew point is ignored; wind adds its kinetic energy to both.
  EXPECT_EQ(Tsigmas(p1, t1, -99.0, z1), Tsigma(p1, t1, t1, z1));
  EXPECT_NEAR(Tt(p1, t1, td1, z1, 20.0) - Tsigma(p1, t1, td1, z1),
              Td(p1, t1, z1, 20.0) - Td(p1, t1, z1, 0.0), 1e-12);
  EXPECT_EQ(Tw(500.0, -12.25), -12.25);
  EXPECT_EQ(t2T(0.0), 273.15);
  EXPECT_EQ(T2t(273.15), 0.0);
  EXPECT_EQ(Lw(10.0), 2.501e6 - 23700.0);
}

TEST(StaticEnergies, CpTimesZeroCelsiusIsTheMachineProduct) {
  const double cp_t0 = 1004.842 * 273.15;
  EXPECT_NE(cp_t0, 274472.5923);  // the decimal literal is one ulp higher
  EXPECT_EQ(Esd(0.0, 0.0), cp_t0);
  EXPECT_NEAR(Esd(15.0, 1000.0), 1004.842 * 288.15 + 9810.0, 1e-8);
  // the latent term is q * 2501, a thousandth of L q
  EXPECT_NEAR(Ess(850.0, 12.0, 1450.0) - Esd(12.0, 1450.0), q(850.0, 12.0) * 2501.0, 1e-9);
  EXPECT_NEAR(Es(850.0, 12.0, 4.0, 1450.0) - Esd(12.0, 1450.0), q(850.0, 4.0) * 2501.0, 1e-9);
}

struct DirectionCase { double u, v, speed, dir; };

TEST(WindDirection, MeteorologicalConventionAtTheCardinalPoints) {
  // wind from the north has no eastward and a negative northward component
  const DirectionCase cases[] = {
      {0, -1, 1, 360}, {0, 1, 1, 180}, {-1, 0, 1, 90}, {1, 0, 1, 270}, {0, 0, 0, 180}};
  for (const auto& c : cases) {
    double speed = -1, dir = -1;
    EXPECT_EQ(uv2magdir(c.u, c.v, &speed, &dir), c.speed);
    EXPECT_DOUBLE_EQ(speed, c.speed) << c.u << "," << c.v;
    EXPECT_DOUBLE_EQ(dir, c.dir) << c.u << "," << c.v;
  }
  EXPECT_NEAR(u(10.0, 270.0), 10.0, 1e-12);  // a westerly blows eastward
  EXPECT_NEAR(v(10.0, 180.0), 10.0, 1e-12);  // a southerly blows northward
}

TEST(WindDirection, ComponentsRoundTripOverTheWholeCircle) {
  for (double speed : {0.5, 7.0, 60.0}) {
    for (int d = 0; d <= 360; ++d) {
      double s = -1, dir = -1;
      uv2magdir(u(speed, d), v(speed, d), &s, &dir);
      EXPECT_NEAR(s, speed, 1e-12 * speed);
      // 0 and 360 are the same wind: compare on the circle. (The truncated degree factor
      // leaves a northerly a hair west of north, so it comes back just above 0.)
      const double off = std::fabs(dir - d);
      EXPECT_LT(std::fmin(off, 360.0 - off), 1e-9) << d;
      EXPECT_GE(dir, 0.0);
      EXPECT_LE(dir, 360.0);
    }
  }
}

TEST(WindDirection, ComponentsUseTheTruncatedDegreeFactor) {
  // 180 * 0.017453292519943 falls 5.3e-14 short of pi, so a northerly keeps a small
  // eastward component that the full-precision factor (1.2e-16) would not give.
  const double shortfall = M_PI - 180.0 * 0.017453292519943;
  EXPECT_NEAR(u(1.0, 0.0), -shortfall, 1e-15);
  EXPECT_GT(std::fabs(u(1.0, 0.0)), 1e-14);
  // null outputs are skipped, the speed is still returned
  EXPECT_EQ(uv2magdir(3.0, 4.0, nullptr, nullptr), 5.0);
}

TEST(WaterVapourFlux, SpeedTimesHumidityOverGravity) {
  EXPECT_NEAR(wvflux(3.0, -4.0, 850.0, 10.0, 100.0), 5.0 * q(850.0, 10.0) / 9.81, 1e-15);
  EXPECT_NEAR(wvflux(3.0, -4.0, 850.0, 10.0, 50.0), 2.5 * q(850.0, 10.0) / 9.81, 1e-15);
  EXPECT_EQ(wvflux(0.0, 0.0, 850.0, 10.0, 80.0), 0.0);
}

}  // namespace
