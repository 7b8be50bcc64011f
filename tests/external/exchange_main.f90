! Calls the function of exchange.oz. It has a(i, j) = 10 i + j in the model's order, where twice the transpose of a is
! b(3, 1) = 26 and b(1, 2) = 42, so that 2600 + 420 + 6 is the value.

subroutine exchanged(a, factor, b, count)
  use ZentricaPrecision
  implicit none
  real(zc_real), intent(in) :: a(3, 2)
  integer(zc_int), intent(in) :: factor
  real(zc_real), intent(out) :: b(2, 3)
  integer(zc_int), intent(out) :: count
  b = factor * transpose(a)
  count = size(a)
end subroutine

program main
  use ZentricaPrecision
  use zc_Exchange, only: used
  implicit none
  real(zc_real), parameter :: a(3, 2) = reshape([11, 12, 13, 21, 22, 23], [3, 2])
  if (abs(used(a) - 3026) > 1e-9) then
    print *, used(a)
    error stop 'the value is not 3026'
  end if
end program
