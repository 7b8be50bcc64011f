// Ladder: the values of one section, and the resistance of the line to direct current, section by section.

#include "check.h"
#include "ladder.h"

int main() {
  Ladder_Tsections = 10;
  Ladder_TlineLength = 150;
  const double resistance = Ladder_TperSection(0.085), leak = 2e-9;
  check("resistance of a section", resistance, 1.275);
  check("inductance of a section", Ladder_TperSection(2.5e-7), 3.75e-6);

  // What an endless ladder looks like to direct current: one section more in front of it changes nothing.
  const double endless = resistance / 2 + std::sqrt(resistance * resistance / 4 + resistance / leak);
  double seen = endless;
  section_Tvoltage.SetShape(Ladder_Tsections);
  for (int k = Ladder_Tsections; k >= 1; k--) {
    seen = resistance + 1 / (leak + 1 / seen);
    section_Tvoltage(k) = seen;
  }
  check("resistance seen before ten sections more", seen, endless);
  check("least of the resistances on the way", LumenMin(section_Tvoltage), endless);
  return checked();
}
