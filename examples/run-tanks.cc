// Tanks: the speed of a jet, and the upper tank of the laboratory plant running empty.

#include "check.h"
#include "tanks.h"

int main() {
  Tanks_Tgravity = 9.81;
  check("speed under 0.5 m of water", Tanks_TjetSpeed(0.5), std::sqrt(9.81));
  check("speed against it", Tanks_TjetSpeed(-0.5), -std::sqrt(9.81));
  check("no head, no jet", 1 + Tanks_TjetSpeed(0), 1);

  // Under area*level' = -opening*speed the root of the level falls evenly, so that one step of the rule
  // level += step*(level' at the middle of the roots) is exact.
  const double area = 0.2, opening = 0.0003, step = 1;
  laboratory_Tupper_Tlevel = 0.8;
  const double fall = opening / area * std::sqrt(2 * Tanks_Tgravity) / 2 * step;  // of the root, in one step
  for (int i = 0; i < 100; i++) {
    const double root = std::sqrt(laboratory_Tupper_Tlevel) - fall / 2;
    laboratory_Tupper_Tlevel -= step * opening / area * Tanks_TjetSpeed(root * root);
  }
  check("level after 100 s", laboratory_Tupper_Tlevel, std::pow(std::sqrt(0.8) - 100 * fall, 2));
  return checked();
}
