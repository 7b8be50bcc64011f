// Mechanism: the engine's crank and rod at an angle, by the functions of vectors and the runtime's arrays.

#include "check.h"
#include "mechanism.h"

int main() {
  check("length of (3, 4)", Mechanism_Tnorm(make_lumenN(2, 3.0, 4.0)), 5);
  check("(1, 2) x (3, 4)", Mechanism_Twedge(make_lumenN(2, 1.0, 2.0), make_lumenN(2, 3.0, 4.0)), -2);

  const double radius = 0.043, rod = 3.2 * radius, angle = 0.7;
  const double across = std::asin(-radius * std::sin(angle) / rod);
  ground_Ttip = 0;
  engine_Tcrank_Taxis = make_lumenN(2, std::cos(angle), std::sin(angle));
  engine_Tcrank_Tbase = ground_Ttip;
  engine_Tcrank_Ttip = engine_Tcrank_Tbase + radius * engine_Tcrank_Taxis;
  engine_Trod_Taxis = make_lumenN(2, std::cos(across), std::sin(across));
  engine_Trod_Tbase = engine_Tcrank_Ttip;
  engine_Trod_Ttip = engine_Trod_Tbase + rod * engine_Trod_Taxis;
  engine_Tpiston_Tcentre = engine_Trod_Ttip;
  engine_Tpiston_Tstroke = engine_Tpiston_Tcentre(1);

  check("length of the crank", Mechanism_Tnorm(engine_Tcrank_Ttip - engine_Tcrank_Tbase), radius);
  check("1 + height of the piston", 1 + engine_Tpiston_Tcentre(2), 1);
  check("stroke", engine_Tpiston_Tstroke,
        radius * std::cos(angle) + std::sqrt(rod * rod - std::pow(radius * std::sin(angle), 2)));
  // A force along the rod turns the crank with the lever that stands at a right angle to it.
  check("lever of the rod on the crank", Mechanism_Twedge(engine_Tcrank_Ttip, engine_Trod_Taxis),
        radius * std::sin(across - angle));
  return checked();
}
