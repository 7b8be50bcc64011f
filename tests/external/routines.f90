! The Fortran routines that foreign.oz declares.

subroutine f_scalars(x, j, z, y, i, w)
  double precision, intent(in) :: x
  double complex, intent(in) :: z
  integer, intent(in) :: i
  integer, intent(out) :: j
  double precision, intent(out) :: y
  double complex, intent(out) :: w
  j = i + 1
  y = x / 2
  w = z * (0d0, 1d0)
end subroutine

double precision function f_power(n, x)
  integer, intent(in) :: n
  double precision, intent(in) :: x
  f_power = x**n
end function

double complex function f_turned(z)
  double complex, intent(in) :: z
  f_turned = z * (0d0, 1d0)
end function

integer function f_division(x, y, rest)
  double precision, intent(in) :: x, y
  double precision, intent(out) :: rest
  f_division = floor(x / y)
  rest = x - f_division * y
end function

subroutine f_hypotenuse(x, y, r)
  double precision, intent(in) :: x, y
  double precision, intent(out) :: r
  r = sqrt(x**2 + y**2)
end subroutine

subroutine f_doubled(i)
  integer, intent(inout) :: i
  i = 2 * i
end subroutine

double precision function f_total(rows, columns, a)
  integer, intent(in) :: rows, columns
  double precision, intent(in) :: a(rows, columns)
  f_total = sum(a(:, columns)) - sum(a(:, 1))
end function

subroutine f_marked2(n1, n2, a, b)
  integer, intent(in) :: n1, n2
  double precision, intent(inout) :: a(n1, n2)
  integer, intent(out) :: b(n2, n1)
  integer :: i, j
  do i = 1, n1
    do j = 1, n2
      a(i, j) = a(i, j) + 10 * i + j
      b(j, i) = 10 * i + j
    end do
  end do
end subroutine

subroutine f_marked4(n1, n2, n3, n4, a, b)
  integer, intent(in) :: n1, n2, n3, n4
  double precision, intent(inout) :: a(n1, n2, n3, n4)
  double complex, intent(out) :: b(n4, n3, n2, n1)
  integer :: i, j, k, l
  do i = 1, n1
    do j = 1, n2
      do k = 1, n3
        do l = 1, n4
          a(i, j, k, l) = a(i, j, k, l) + 1000 * i + 100 * j + 10 * k + l
          b(l, k, j, i) = 1000 * i + 100 * j + 10 * k + l
        end do
      end do
    end do
  end do
end subroutine
