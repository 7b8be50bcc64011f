// A schedule for three workers, as a driver calls it: seven pendulums in a ring, each turned by its neighbours. Worker w
// computes the elements w, w + 3, w + 6.
#include <cmath>
#include <string>

extern "C" {
void zc_initialize_state(double*);
void zc_assign_worker(int*, double*, double*);
int zc_get_real(double*, char*);
}

namespace {
constexpr int kStates = 7;
}

void zc_initialize_state(double* state) {
  for (int i = 0; i < kStates; i++) zc_get_real(&state[i], ("x" + std::to_string(i)).data());
}

void zc_assign_worker(int* worker, double* y, double* out) {
  for (int i = *worker - 1; i < kStates; i += 3)
    out[i] = std::sin(y[(i + 1) % kStates]) - std::cos(y[(i + kStates - 1) % kStates]) * y[i];
}
