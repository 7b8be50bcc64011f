! Functions of numbers, under their names in Fortran.
!
! Generated text says sqrt(n) for an integer n, MAX(0, x), EXP(1.0) for the number e and mod(a, b) for a remainder that
! has the sign of b. The intrinsic functions of these names refuse such arguments or mean something else; the specifics
! below take them, and leave to the intrinsic functions what they do right. All are elemental: an array argument gives
! an array of its shape.
!
!   real(i), real(x)        integer or real to real(zc_real)
!   exp(c)                  of a literal of single precision: real(zc_real)
!   sqrt, exp, log, sin, cos, tan, asin, acos, atan, sinh, cosh, tanh (i)      of an integer: real(zc_real)
!   floor(i), ceiling(i)    of an integer: the integer itself
!   anint(x), anint(i)      the nearest integer(zc_int); halves go to the even neighbour
!   sign(1, i), sign(1.0D0, x)  the first argument with the sign of the second, 0 for 0: integer(zc_int)
!   mod(a, b)               a - b*floor(a/b): two integers give an integer, else real(zc_real)
!   max(a, b), min(a, b)    of an integer and a real: real(zc_real)
!   atan2(x, y)             the angle of the point (x, y), in this order: real(zc_real)
!   XFactorial(n)           n! of an integer from 0 to 12
!   XFactorial(x)           Gamma(x + 1)
!   XFactorial2(n)          n*(n - 2)*... of an integer from -1 to 19
!   XStringLength(s)        the length of a text without the blanks at its end: integer(zc_int)
!   XStringReverse(s)       the text from its end to its start: character(len=zc_strlen)

! The intrinsic atan2, out of reach of the one that is declared below.
module zc_angles
  use ZentricaPrecision
  implicit none
contains
  elemental function angle(x, y) result(r)
    real(zc_real), intent(in) :: x, y
    real(zc_real) :: r
    r = atan2(y, x)
  end function
end module zc_angles

module zc_numbers
  use ZentricaPrecision
  use zc_angles
  implicit none
  private


  public :: real, sqrt, exp, log, sin, cos, tan, asin, acos, atan, sinh, cosh, tanh
  public :: floor, ceiling, anint, sign, mod, max, min, atan2
  public :: XFactorial, XFactorial2, XStringLength, XStringReverse

  interface real
    module procedure real_of_int, real_of_real
  end interface
  interface exp
    module procedure exp_of_literal
  end interface
#define WITH(F) interface F; module procedure F/**/_of_int; end interface
#include "zc_of_int.inc"
#undef WITH
  interface floor
    module procedure itself
  end interface
  interface ceiling
    module procedure itself
  end interface
  interface anint
    module procedure itself, nearest_even
  end interface
  interface sign
    module procedure sign_of_int, sign_of_real
  end interface
  interface mod
    module procedure mod_int_int, mod_int_real, mod_real_int, mod_real_real
  end interface
  interface max
    module procedure max_int_real, max_real_int
  end interface
  interface min
    module procedure min_int_real, min_real_int
  end interface
  interface atan2
    module procedure angle_int_int, angle_int_real, angle_real_int, angle_real_real
  end interface
  interface XFactorial
    module procedure factorial_of_int, factorial_of_real
  end interface

contains

  elemental function real_of_int(i) result(r)
    integer(zc_int), intent(in) :: i
    real(zc_real) :: r
    r = i
  end function

  elemental function real_of_real(x) result(r)
    real(zc_real), intent(in) :: x
    real(zc_real) :: r
    r = x
  end function

  ! ---- of integers

  elemental function exp_of_literal(c) result(r)
    real(zc_single), intent(in) :: c
    real(zc_real) :: r
    r = exp(real(c, zc_real))
  end function

#define WITH(F) elemental real(zc_real) function F/**/_of_int(i); integer(zc_int), intent(in) :: i; \
 F/**/_of_int = F(real(i, zc_real)); end
#include "zc_of_int.inc"
#undef WITH

  ! ---- to integers

  elemental function itself(i) result(r)
    integer(zc_int), intent(in) :: i
    integer(zc_int) :: r
    r = i
  end function

  elemental function nearest_even(x) result(r)
    real(zc_real), intent(in) :: x
    integer(zc_int) :: r
    r = nint(x, zc_int)
    if (abs(x - r) >= 0.5_zc_real) r = 2*nint(x/2, zc_int)  ! a half, which nint rounds away from zero
  end function

  elemental function sign_of_int(one, i) result(r)
    integer(zc_int), intent(in) :: one, i
    integer(zc_int) :: r
    r = merge(one, 0, i > 0) - merge(one, 0, i < 0)
  end function

  elemental function sign_of_real(one, x) result(r)
    real(zc_real), intent(in) :: one, x
    integer(zc_int) :: r
    r = int(one, zc_int)*(merge(1, 0, x > 0) - merge(1, 0, x < 0))
  end function

  ! ---- of two numbers

  elemental function mod_int_int(a, b) result(r)
    integer(zc_int), intent(in) :: a, b
    integer(zc_int) :: r
    r = modulo(a, b)
  end function

  elemental function mod_int_real(a, b) result(r)
    integer(zc_int), intent(in) :: a
    real(zc_real), intent(in) :: b
    real(zc_real) :: r
    r = modulo(real(a, zc_real), b)
  end function

  elemental function mod_real_int(a, b) result(r)
    real(zc_real), intent(in) :: a
    integer(zc_int), intent(in) :: b
    real(zc_real) :: r
    r = modulo(a, real(b, zc_real))
  end function

  elemental function mod_real_real(a, b) result(r)
    real(zc_real), intent(in) :: a, b
    real(zc_real) :: r
    r = modulo(a, b)
  end function

  elemental function max_int_real(a, b) result(r)
    integer(zc_int), intent(in) :: a
    real(zc_real), intent(in) :: b
    real(zc_real) :: r
    r = max(real(a, zc_real), b)
  end function

  elemental function max_real_int(a, b) result(r)
    real(zc_real), intent(in) :: a
    integer(zc_int), intent(in) :: b
    real(zc_real) :: r
    r = max(a, real(b, zc_real))
  end function

  elemental function min_int_real(a, b) result(r)
    integer(zc_int), intent(in) :: a
    real(zc_real), intent(in) :: b
    real(zc_real) :: r
    r = min(real(a, zc_real), b)
  end function

  elemental function min_real_int(a, b) result(r)
    real(zc_real), intent(in) :: a
    integer(zc_int), intent(in) :: b
    real(zc_real) :: r
    r = min(a, real(b, zc_real))
  end function

  elemental function angle_real_real(x, y) result(r)
    real(zc_real), intent(in) :: x, y
    real(zc_real) :: r
    r = angle(x, y)
  end function

  elemental function angle_int_int(x, y) result(r)
    integer(zc_int), intent(in) :: x, y
    real(zc_real) :: r
    r = angle_real_real(real(x, zc_real), real(y, zc_real))
  end function

  elemental function angle_int_real(x, y) result(r)
    integer(zc_int), intent(in) :: x
    real(zc_real), intent(in) :: y
    real(zc_real) :: r
    r = angle_real_real(real(x, zc_real), y)
  end function

  elemental function angle_real_int(x, y) result(r)
    real(zc_real), intent(in) :: x
    integer(zc_int), intent(in) :: y
    real(zc_real) :: r
    r = angle_real_real(x, real(y, zc_real))
  end function

  ! ---- kinds that are written under their own names

  elemental function factorial_of_int(n) result(r)
    integer(zc_int), intent(in) :: n
    integer(zc_int) :: r, k
    r = 1
    do k = 2, n
      r = r*k
    end do
  end function

  elemental function factorial_of_real(x) result(r)
    real(zc_real), intent(in) :: x
    real(zc_real) :: r
    r = gamma(x + 1)
  end function

  elemental function XFactorial2(n) result(r)
    integer(zc_int), intent(in) :: n
    integer(zc_int) :: r, k
    r = 1
    do k = n, 2, -2
      r = r*k
    end do
  end function

  elemental function XStringLength(s) result(r)
    character(len=*), intent(in) :: s
    integer(zc_int) :: r
    r = len_trim(s)
  end function

  elemental function XStringReverse(s) result(r)
    character(len=*), intent(in) :: s
    character(len=zc_strlen) :: r
    integer :: i, n
    n = len_trim(s)
    r = ''
    do i = 1, min(n, zc_strlen)
      r(i:i) = s(n + 1 - i:n + 1 - i)
    end do
  end function
end module zc_numbers
