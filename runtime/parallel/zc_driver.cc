// Integrates the system whose schedule it is linked with, and prints a table of the states.
//
//   program --to=10 --every=0.1 start.txt >table
//
// The start values are lines "NAME VALUE"; the names are those that the schedule asks for. The table has a line for
// each time, with the states in the order of the schedule.
//
// The state vector is what zc_initialize_state has asked for; the places of the values tell how long it is and with
// which element it begins. Its derivative is what the workers write, each its own elements. The workers are spread over
// the threads with -fopenmp, and with -DZC_MPI over the processes.
//
// Methods: "rk4", the classical method of fourth order with a fixed step (W. Kutta, Zeitschrift fuer Mathematik und
// Physik 46, 1901); "dopri5", a method of fifth order with one of fourth order that shares its stages and estimates the
// error of each step (J. R. Dormand and P. J. Prince, Journal of Computational and Applied Mathematics 6, 1980).
#include <getopt.h>
#include <sys/mman.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "zc_parallel.h"

// The schedule is Fortran or C++ text; one of the two is linked.
extern "C" {
void zc_initialize_state(double*) __attribute__((weak));
void zc_assign_worker(int*, double*, double*) __attribute__((weak));
void zc_initialize_state_(double*) __attribute__((weak));
void zc_assign_worker_(int*, double*, double*) __attribute__((weak));
int zc_get_real(double* place, char* name);
double zc_get_real_(double* place, const char* name, size_t length);
}

namespace {

using Vector = std::vector<double>;

[[noreturn]] void fail(const std::string& message, int status = 1) {
  if (zc_rank() == 0) std::fprintf(stderr, "%s\n", message.c_str());
  std::exit(status);
}

// ---- options

const char* const kHelp =
    "usage: PROGRAM [OPTION]... START\n"
    "\n"
    "Integrates the system and prints a line of time and states for each time. START is a file of start values, lines\n"
    "\"NAME VALUE\".\n"
    "\n"
    "  --from=T        start time (0)\n"
    "  --to=T          end time (1)\n"
    "  --every=DT      time between two lines of the table (the whole range)\n"
    "  --method=NAME   dopri5, with steps by tolerance (the default), or rk4, with fixed steps\n"
    "  --step=H        the step of rk4, the first step of dopri5 (a hundredth of the time between two lines)\n"
    "  --tolerance=E   the error of a step of dopri5 relative to 1 + the size of each state (1e-8)\n"
    "  --workers=N     the workers of the schedule (1)\n"
    "  --help          this text\n";

struct Options {
  double from = 0, to = 1, every = 0, step = 0, tolerance = 1e-8;
  int workers = 1;
  bool fixed = false;
  const char* start = nullptr;
} options;

double number(const char* option, const char* text) {
  char* end = nullptr;
  const double value = std::strtod(text, &end);
  if (end == text || *end || !std::isfinite(value)) fail(std::string("--") + option + ": no number: " + text, 5);
  return value;
}

void read_option(const char* name, const char* value) {
  const std::string option = name;
  if (option == "from") options.from = number(name, value);
  if (option == "to") options.to = number(name, value);
  if (option == "every") options.every = number(name, value);
  if (option == "step") options.step = number(name, value);
  if (option == "tolerance") options.tolerance = number(name, value);
  if (option == "workers") options.workers = static_cast<int>(number(name, value));
  if (option == "method") {
    options.fixed = std::strcmp(value, "rk4") == 0;
    if (!options.fixed && std::strcmp(value, "dopri5") != 0) fail(std::string("--method: unknown: ") + value, 5);
  }
  if (option == "help") {
    if (zc_rank() == 0) std::fputs(kHelp, stdout);
    std::exit(0);
  }
}

void read_options(int argc, char** argv) {
  static const option names[] = {{"from", 1, nullptr, 0},   {"to", 1, nullptr, 0},        {"every", 1, nullptr, 0},
                                 {"step", 1, nullptr, 0},   {"tolerance", 1, nullptr, 0}, {"workers", 1, nullptr, 0},
                                 {"method", 1, nullptr, 0}, {"help", 0, nullptr, 0},      {nullptr, 0, nullptr, 0}};
  int at = 0;
  for (int c = 0; (c = getopt_long(argc, argv, "", names, &at)) != -1;) {
    if (c != 0) fail("Try --help.", 5);
    read_option(names[at].name, optarg);
  }
  if (optind + 1 != argc) fail(kHelp, 5);
  options.start = argv[optind];
  if (!(options.to > options.from)) fail("--to: the end is not behind the start", 5);
  if (options.every == 0) options.every = options.to - options.from;
  if (options.step == 0) options.step = options.every / 100;
  if (options.every < 0 || options.step < 0 || options.tolerance <= 0 || options.workers < 1)
    fail("--every, --step, --tolerance and --workers must be positive", 5);
}

// ---- the state vector

std::map<std::string, double> start_values;
std::map<double*, std::string> places;  // of the state vector, and the names asked for
std::string missing;

void read_start_values(const char* file_name) {
  std::ifstream file(file_name);
  if (!file) fail(std::string("cannot read ") + file_name, 5);
  std::string line;
  for (int n = 1; std::getline(file, line); n++) {
    std::istringstream words(line);
    std::string name, rest;
    double value = 0;
    if (!(words >> name) || name[0] == '#') continue;
    if (!(words >> value) || words >> rest) fail(file_name + (":" + std::to_string(n)) + ": not \"NAME VALUE\"", 5);
    start_values[name] = value;
  }
}

void ask(double* place, const std::string& name) {
  places[place] = name;
  const auto found = start_values.find(name);
  if (found == start_values.end())
    missing += " " + name;
  else
    *place = found->second;
}

// Room for as many states as a schedule can have; memory is taken where it is written.
double* reserve() {
  constexpr size_t kBytes = size_t{8} << 31;
  void* const room = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (room == MAP_FAILED) fail("no memory for the state vector");
  return static_cast<double*>(room);
}

Vector initial_state() {
  double* const room = reserve();
  if (zc_initialize_state)
    zc_initialize_state(room);
  else if (zc_initialize_state_)
    zc_initialize_state_(room);
  else
    fail("there is no schedule in this program");
  if (!missing.empty()) fail("no start values for:" + missing, 5);
  if (places.empty()) fail("the system has no states");
  double* const first = places.begin()->first;
  if (places.rbegin()->first - first + 1 != static_cast<std::ptrdiff_t>(places.size()))
    fail("the state vector has gaps");
  return Vector(first, first + places.size());
}

void run_worker(int worker, double* y, double* out) {
  if (zc_assign_worker)
    zc_assign_worker(&worker, y, out);
  else
    zc_assign_worker_(&worker, y, out);
}

// A single worker runs in each process, which costs less than sending its results around.
void derivative(const Vector& state, Vector* out) {
  double* const y = const_cast<double*>(state.data());
  std::fill(out->begin(), out->end(), 0.0);
  if (options.workers == 1) return run_worker(1, y, out->data());
#ifdef _OPENMP
#pragma omp parallel for schedule(dynamic)
#endif
  for (int worker = 1 + zc_rank(); worker <= options.workers; worker += zc_ranks()) run_worker(worker, y, out->data());
  zc_sum(out->data(), static_cast<int>(out->size()));
}

// ---- methods

// y + h (w[0] k[0] + w[1] k[1] + ...)
void combine(const Vector& y, double h, const std::vector<Vector>& k, const double* w, size_t terms, Vector* result) {
  for (size_t i = 0; i < y.size(); i++) {
    double slope = 0;
    for (size_t s = 0; s < terms; s++) slope += w[s] * k[s][i];
    (*result)[i] = y[i] + h * slope;
  }
}

void check(const Vector& y, double t) {
  for (double value : y)
    if (!std::isfinite(value)) fail("the solution is no longer finite at t = " + std::to_string(t));
}

// Equal steps, none longer than the one that was asked for.
void rk4(Vector* y, double from, double to) {
  const double weights[4][4] = {{0.5}, {0, 0.5}, {0, 0, 1}, {1.0 / 6, 1.0 / 3, 1.0 / 3, 1.0 / 6}};
  std::vector<Vector> k(4, Vector(y->size()));
  Vector stage(y->size());
  const double steps = std::max(1.0, std::ceil((to - from) / options.step * (1 - 1e-12)));
  const double h = (to - from) / steps;
  for (double n = 0; n < steps; n++) {
    stage = *y;
    for (size_t s = 0; s < 4; s++) {
      derivative(stage, &k[s]);
      combine(*y, h, k, weights[s], s + 1, &stage);
    }
    *y = stage;
  }
  check(*y, to);
}

constexpr size_t kStages = 7;

const double kDopri[kStages][kStages] = {
    {1.0 / 5},
    {3.0 / 40, 9.0 / 40},
    {44.0 / 45, -56.0 / 15, 32.0 / 9},
    {19372.0 / 6561, -25360.0 / 2187, 64448.0 / 6561, -212.0 / 729},
    {9017.0 / 3168, -355.0 / 33, 46732.0 / 5247, 49.0 / 176, -5103.0 / 18656},
    {35.0 / 384, 0, 500.0 / 1113, 125.0 / 192, -2187.0 / 6784, 11.0 / 84},
    {71.0 / 57600, 0, -71.0 / 16695, 71.0 / 1920, -17253.0 / 339200, 22.0 / 525, -1.0 / 40}};  // the error

// The greatest error of a step, in units of what is tolerated.
double error_of(const Vector& y, const Vector& moved, double h, const std::vector<Vector>& k) {
  double greatest = 0;
  for (size_t i = 0; i < y.size(); i++) {
    double slope = 0;
    for (size_t s = 0; s < kStages; s++) slope += kDopri[kStages - 1][s] * k[s][i];
    const double error =
        std::fabs(h * slope) / (options.tolerance * (1 + std::max(std::fabs(y[i]), std::fabs(moved[i]))));
    if (!(error <= greatest)) greatest = std::isnan(error) ? HUGE_VAL : error;
  }
  return greatest;
}

// The last stage of a step is the first of the next one. A step grows to at most five times the one before, and
// shrinks to no less than a fifth.
void dopri5(Vector* y, double from, double to, double* h) {
  std::vector<Vector> k(kStages, Vector(y->size()));
  Vector stage(y->size());
  derivative(*y, &k[0]);
  for (double t = from; t < to;) {
    const bool last = t + *h * (1 + 1e-10) >= to;
    const double step = last ? to - t : *h;
    for (size_t s = 1; s < kStages; s++) {
      combine(*y, step, k, kDopri[s - 1], s, &stage);
      derivative(stage, &k[s]);
    }
    const double error = error_of(*y, stage, step, k);
    const double factor = error == 0 ? 5 : std::clamp(0.9 * std::pow(error, -0.2), 0.2, 5.0);
    if (error <= 1) {
      y->swap(stage);
      k[0].swap(k[kStages - 1]);
      t = last ? to : t + step;
      if (!last || factor < 1) *h = step * factor;
    } else {
      *h = step * factor;
      if (t + *h == t) fail("the steps have become too small at t = " + std::to_string(t));
    }
  }
  check(*y, to);
}

// ---- the table

void print_names() {
  std::printf("# t");
  for (const auto& [place, name] : places) std::printf(" %s", name.c_str());
  std::printf("\n");
}

void print_state(double t, const Vector& y) {
  std::printf("%.15g", t);
  for (double value : y) std::printf(" %.17g", value);
  std::printf("\n");
}

void integrate(Vector* y) {
  const bool prints = zc_rank() == 0;
  if (prints) print_names(), print_state(options.from, *y);
  double h = options.step, t = options.from;
  for (long line = 1; t < options.to; line++) {
    double next = options.from + static_cast<double>(line) * options.every;
    if (next > options.to - 1e-10 * options.every) next = options.to;
    options.fixed ? rk4(y, t, next) : dopri5(y, t, next, &h);
    t = next;
    if (prints) print_state(t, *y);
  }
  if (prints && (std::fflush(stdout) != 0 || std::ferror(stdout))) fail("the table could not be written");
}

}  // namespace

int zc_get_real(double* place, char* name) {
  ask(place, name);
  return 0;
}

double zc_get_real_(double* place, const char* name, size_t length) {
  ask(place, std::string(name, length));
  return 0;
}

int main(int argc, char** argv) {
  read_options(argc, argv);
  read_start_values(options.start);
  Vector y = initial_state();
  integrate(&y);
}
