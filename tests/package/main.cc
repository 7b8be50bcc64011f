#include "shapes_code.h"

extern "C" void AL_area();

int main() {
  Shapes_Tfactor = 3;
  void (*const wrapper)() = AL_area;  // the wrappers and their library are linked
  const double area = Shapes_Tarea(3, make_lumenN(3, 0.0, 4.0, 0.0), make_lumenN(3, 0.0, 0.0, 3.0));
  cout << area << " " << square_Thalf_Tgrown(make_lumenN(2, 1.0, 2.0)) << (wrapper ? "\n" : "?\n");
}
