# shellcheck shell=bash
# Finds out what the machine lacks and installs it. To be sourced by the scripts of this tree:
#
#   . tools/setup.sh
#   need build test         installs what these groups lack, or says in one line what is missing and ends the script
#
# A thing counts as present when it works (a command is found, a probe compiles), whichever package it came from; on a
# complete machine the package manager is not called at all.

# Compiles and links the program on standard input with the given compiler and options.
probe() {
  "$@" -x c++ - -o /dev/null >/dev/null 2>&1
}

has_compiler() {
  echo '#include <concepts>
    int main() { return std::integral<int> ? 0 : 1; }' | probe g++ -std=c++20
}

# The presets need cmake 3.22.
has_cmake() {
  has cmake && printf '3.22\n%s\n' "$(cmake --version | sed -n 's/^cmake version //p')" | sort -V -C
}

has_gtest() {
  echo '#include <gtest/gtest.h>' | probe g++ -std=c++20 -fsyntax-only
}

has_fuzzer() {
  echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' |
    probe clang++ -fsanitize=fuzzer
}

has_lapack() {
  echo 'extern "C" void dgesv_();
    int main() { dgesv_(); }' | probe g++ -Wl,--no-as-needed -llapack -lblas
}

has() { command -v "$1" >/dev/null; }

# The packages that a group lacks, one a line.
lacking() {
  case $1 in
    build)
      has_compiler || echo g++
      has_cmake || echo cmake
      has ninja || echo ninja-build
      has_gtest || echo libgtest-dev
      has python3 || echo python3
      ;;
    check)
      has gfortran || echo gfortran
      has mpicxx || echo libopenmpi-dev
      has mpirun || echo openmpi-bin
      has_lapack || printf '%s\n' liblapack-dev libblas-dev
      has gnuplot || echo gnuplot-nox
      has clang-format || echo clang-format
      has clang-tidy || echo clang-tidy
      has clang++ || echo clang
      has_fuzzer || echo libclang-rt-dev
      ;;
    bench)
      has python3 || echo python3
      has gcc || echo gcc
      has cpp || echo cpp
      ;;
    peers)
      has m4 || echo m4
      has tcc || echo tcc
      has ginsh || echo ginac-tools
      has maxima || echo maxima
      has opt || echo llvm
      python3 -c 'import sympy' 2>/dev/null || echo python3-sympy
      [ -e /usr/include/eigen3/Eigen/Dense ] || echo libeigen3-dev
      [ -e /usr/include/blitz/array.h ] || echo libblitz0-dev
      ;;
  esac
}

# Somebody sits at a terminal who could type a password.
terminal=$([ ! -t 2 ] || echo yes)

# apt-get with the rights that it needs.
apt_get() {
  if [ "$(id -u)" = 0 ]; then
    env DEBIAN_FRONTEND=noninteractive apt-get -qq "$@"
  else
    sudo -n true || { [ -n "$terminal" ] && sudo true; } || return 1
    sudo env DEBIAN_FRONTEND=noninteractive apt-get -qq "$@"
  fi </dev/null >/dev/null 2>&1
}

# Whether there is a chance to install anything.
can_install() {
  has apt-get && { [ "$(id -u)" = 0 ] || has sudo; }
}

# Installs packages. A fresh machine has no package lists, so they are fetched when the first attempt fails.
install_packages() {
  apt_get -y --no-install-recommends install "$@" && return 0
  apt_get update || true
  apt_get -y --no-install-recommends install "$@"
}

# What several groups lack, on one line.
missing_packages() {
  local group
  for group in "$@"; do lacking "$group"; done | sort -u | paste -s -d ' '
}

# Everything that the groups lack, installed; the script ends with status 1 if something is missing afterwards.
need() {
  local missing
  missing=$(missing_packages "$@")
  [ -z "$missing" ] && return 0
  if can_install; then
    echo "Installing: $missing"
    # shellcheck disable=SC2086
    install_packages $missing
    missing=$(missing_packages "$@")
    [ -z "$missing" ] && return 0
  fi
  echo "These packages are missing and cannot be installed: $missing" >&2
  exit 1
}
