// Bearing: the force law of a contact, and the forces of all rollers on a ring that is pressed down.

#include "bearing.h"
#include "check.h"

int main() {
  Bearing_Tmodulus = 2.08e11;
  Bearing_Tcount = 14;
  Bearing_Tclearance = 12e-6;
  const double stiffness = Bearing_TlineStiffness(0.0108);
  check("stiffness of a line of 10.8 mm", stiffness, 0.26 * 2.08e11 * std::exp(8.0 / 9 * std::log(0.0108)));
  check("force at 20 um", Bearing_TcontactForce(stiffness, 20e-6), stiffness * std::exp(10.0 / 9 * std::log(20e-6)));
  check("force of a gap, and 1", 1 + Bearing_TcontactForce(stiffness, -1e-6), 1);
  check("turn of the outer ring, and 1", 1 + outer_Trotation(3.5), 1);

  // Rollers at equal angles around a ring that fills its clearance: the forces cancel out.
  inner_Tx = 0;
  inner_Ty = -20e-6;
  double down = 0, across = 0;
  for (int k = 0; k < Bearing_Tcount; k++) {
    const double angle = 2 * M_PI * k / Bearing_Tcount;
    const double depth = inner_Tx * std::cos(angle) + inner_Ty * std::sin(angle) - Bearing_Tclearance / 4;
    const double force = Bearing_TcontactForce(stiffness, depth);
    down += force * std::sin(angle);
    across += force * std::cos(angle);
  }
  std::printf("%-44s %.6g N\n", "the rollers carry", -down);
  check("1 + share of the force across", 1 + across / down, 1);
  return checked();
}
