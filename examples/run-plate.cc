// Plate: the temperatures of the cells, found by whole-array assignments to the interior.

#include "check.h"
#include "plate.h"

int main() {
  const int rows = 6, columns = 8;
  const double heater = 420, air = 293.15;
  // The left edge is heated and the right one cool; upper and lower edge fall evenly in between.
  cell_Ttemperature.SetShape(rows, columns);
  cell_Ttemperature = air;
  for (int j = 1; j <= columns; j++) {
    const double edge = heater + (air - heater) * (j - 1) / (columns - 1);
    cell_Ttemperature.SetCol(j, j == 1 || j == columns ? edge : air);
    cell_Ttemperature(1, j) = edge;
    cell_Ttemperature(rows, j) = edge;
  }
  const doubleNN& u = cell_Ttemperature;
  const R down(2, rows - 1), across(2, columns - 1);
  for (int round = 0; round < 600; round++)
    cell_Ttemperature.Set(
        down, across,
        (u(R(1, rows - 2), across) + u(R(3, rows), across) + u(down, R(1, columns - 2)) + u(down, R(3, columns))) / 4);
  for (int j = 1; j <= columns; j++) std::printf("%8.2f", u(3, j));
  std::printf("\n");
  check("temperature in the middle", u(3, 4), heater + (air - heater) * 3 / 7);
  check("hottest cell inside", LumenMax(u(down, across)), heater + (air - heater) / 7);
  check("mean of a column inside", lumen_mean(u)(5), heater + (air - heater) * 4 / 7);
  return checked();
}
