// Integrates a schedule with the classical Runge-Kutta method of fourth order and prints the state at the end.
//
//   driver STEPS END NAME=START...       one line "NAME VALUE" per state variable
//
// Compiled with -DFORTRAN for a Fortran schedule, whose names end in "_" and whose vectors begin with the first
// element; the C++ text counts the start values from the second one.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

std::map<std::string, double> start;
std::vector<std::string> names;  // in the order in which they were asked for

double ask(double* value, const std::string& name) {
  names.push_back(name);
  *value = start.at(name);
  return 0;
}

}  // namespace

#ifdef FORTRAN
extern "C" double zc_get_real_(double* value, const char* name, size_t length) {
  return ask(value, std::string(name, length));
}
extern "C" void zc_initialize_state_(double*);
extern "C" void zc_assign_worker_(int*, double*, double*);
#define zc_initialize_state zc_initialize_state_
#define zc_assign_worker zc_assign_worker_
constexpr size_t kFirst = 0;
#else
extern "C" int zc_get_real(double* value, char* name) { return static_cast<int>(ask(value, name)); }
extern "C" void zc_initialize_state(double*);
extern "C" void zc_assign_worker(int*, double*, double*);
constexpr size_t kFirst = 1;
#endif

namespace {

using State = std::vector<double>;

State derivative(State y) {
  State result(y.size());
  int worker = 1;
  zc_assign_worker(&worker, y.data(), result.data());
  return result;
}

State moved(State y, double h, const State& slope) {
  for (size_t i = 0; i < y.size(); i++) y[i] += h * slope[i];
  return y;
}

State step(const State& y, double h) {
  const State a = derivative(y), b = derivative(moved(y, h / 2, a));
  const State c = derivative(moved(y, h / 2, b)), d = derivative(moved(y, h, c));
  State slope(y.size());
  for (size_t i = 0; i < y.size(); i++) slope[i] = (a[i] + 2 * b[i] + 2 * c[i] + d[i]) / 6;
  return moved(y, h, slope);
}

}  // namespace

int main(int argc, char** argv) {
  const int steps = std::atoi(argv[1]);
  const double end = std::atof(argv[2]);
  for (int i = 3; i < argc; i++) {
    const std::string text = argv[i];
    start[text.substr(0, text.find('='))] = std::atof(text.c_str() + text.find('=') + 1);
  }
  State y(start.size() + kFirst);
  zc_initialize_state(y.data());
  y.erase(y.begin(), y.begin() + kFirst);
  for (int i = 0; i < steps; i++) y = step(y, end / steps);
  for (size_t i = 0; i < y.size(); i++) std::printf("%s %.17g\n", names[i].c_str(), y[i]);
}
