! The functions that generated text calls beyond those of Fortran: one generic name each, over types and ranks.
!
! Elements are integer(zc_int), real(zc_real), logical or character; where two arguments are named they have the same
! type, or one is an integer and the other a real, and the result is real. Texts come out with the length zc_strlen. An
! array of the model has its dimensions reversed: what is {{1, 2, 3}, {4, 5, 6}} there has the shape (3, 2), and its
! rows are a(:,1) and a(:,2). All functions are pure.
!
!   zc_mkc(e)                    {e}                  e of rank 0 to 3; one rank more, with the last dimension 1
!   zc_mkpc(e, rest)             {e, ...}             e of rank 0 to 3, rest of one rank more; longer by one in the last
!   zc_append(list, e)           list and e           list of rank 1 to 4, e of one rank less
!   zc_prepend(list, e)          e and list           likewise
!   zc_join(a, b)                a and b end to end   of equal rank 1 to 4; joined in the last dimension
!   zc_equal(a, b)               a == b as wholes     of equal rank 1 to 4; logical, false where the shapes differ
!   zc_drop_edge(list, n)        without the first n elements, or the last -n ones; list of rank 1
!   zc_drop_middle(list, m, n)   without elements m to n; list of rank 1
!   zc_getpart1(a, i) to zc_getpart4(a, l, k, j, i)   a[[i]] to a[[i, j, k, l]]; a up to rank 4, less one rank per index
!   zc_extract_N0(a, idx) to zc_extract_N3(a, idx)    a[[idx]] with the indices in a list; to a result of rank 0 to 3
!   zc_outer_product(a, b)       a[[i]]*b[[j]] as [[i, j]]; of integers and reals, of rank 1; shape (size(b), size(a))
!   zc_crossprod_2(a, b)         a vector at right angles to two of length 3; of integers and reals
!   zc_crossprod_3(a, b, c), zc_crossprod_4(a, b, c, d)   to three of length 4, to four of length 5; all of one type
!   matmul(a, b)                 a.b of matrix and matrix, matrix and vector, vector and matrix
!   shape(a)                     {m, n, ...} of an array of rank 1 to 4: the dimensions as the model counts them
!
! A place below 0 counts from the end of its dimension: -1 is the last element. zc_numbers has the functions of numbers.

! Places in a dimension.
module zc_places
  use ZentricaPrecision
  implicit none
contains
  elemental function place(i, n) result(r)
    integer(zc_int), intent(in) :: i
    integer, intent(in) :: n
    integer :: r
    r = i
    if (i < 0) r = n + 1 + i
  end function
end module zc_places

#define EQUALS ==

module zc_int_lists
#define ARGUMENT integer(zc_int)
#define RESULT integer(zc_int)
#include "zc_lists.inc"
#undef ARGUMENT
#undef RESULT
end module

module zc_real_lists
#define ARGUMENT real(zc_real)
#define RESULT real(zc_real)
#include "zc_lists.inc"
#undef ARGUMENT
#undef RESULT
end module

module zc_text_lists
#define ARGUMENT character(len=*)
#define RESULT character(len=zc_strlen)
#include "zc_lists.inc"
#undef ARGUMENT
#undef RESULT
end module

#undef EQUALS
#define EQUALS .eqv.

module zc_logical_lists
#define ARGUMENT logical
#define RESULT logical
#include "zc_lists.inc"
#undef ARGUMENT
#undef RESULT
end module

#undef EQUALS

module zc_int_real_lists
#define FIRST integer(zc_int)
#define SECOND real(zc_real)
#include "zc_mixed_lists.inc"
#undef FIRST
#undef SECOND
end module

module zc_real_int_lists
#define FIRST real(zc_real)
#define SECOND integer(zc_int)
#include "zc_mixed_lists.inc"
#undef FIRST
#undef SECOND
end module

module zc_int_products
#define FIRST integer(zc_int)
#define SECOND integer(zc_int)
#define RESULT integer(zc_int)
#include "zc_products.inc"
#undef FIRST
#undef SECOND
#undef RESULT
end module

#define RESULT real(zc_real)

module zc_real_products
#define FIRST real(zc_real)
#define SECOND real(zc_real)
#include "zc_products.inc"
#undef FIRST
#undef SECOND
end module

module zc_int_real_products
#define FIRST integer(zc_int)
#define SECOND real(zc_real)
#include "zc_products.inc"
#undef FIRST
#undef SECOND
end module

module zc_real_int_products
#define FIRST real(zc_real)
#define SECOND integer(zc_int)
#include "zc_products.inc"
#undef FIRST
#undef SECOND
end module

#undef RESULT

! The vector r at right angles to n - 1 vectors of length n for which the rows of all of them and r have a determinant
! above 0.
module zc_cross_products
  use ZentricaPrecision
  implicit none
  private
  public :: zc_crossprod_3, zc_crossprod_4

  interface zc_crossprod_3
    module procedure real_3, int_3
  end interface
  interface zc_crossprod_4
    module procedure real_4, int_4
  end interface

contains

  pure function real_3(a, b, c) result(r)
    real(zc_real), intent(in) :: a(4), b(4), c(4)
    real(zc_real) :: r(4)
    r = orthogonal(reshape([a, b, c], [4, 3]))
  end function

  pure function int_3(a, b, c) result(r)
    integer(zc_int), intent(in) :: a(4), b(4), c(4)
    integer(zc_int) :: r(4)
    r = nint(real_3(real(a, zc_real), real(b, zc_real), real(c, zc_real)))
  end function

  pure function real_4(a, b, c, d) result(r)
    real(zc_real), intent(in) :: a(5), b(5), c(5), d(5)
    real(zc_real) :: r(5)
    r = orthogonal(reshape([a, b, c, d], [5, 4]))
  end function

  pure function int_4(a, b, c, d) result(r)
    integer(zc_int), intent(in) :: a(5), b(5), c(5), d(5)
    integer(zc_int) :: r(5)
    r = nint(real_4(real(a, zc_real), real(b, zc_real), real(c, zc_real), real(d, zc_real)))
  end function

  ! By the cofactors of the missing row.
  pure function orthogonal(v) result(r)
    real(zc_real), intent(in) :: v(:,:)
    real(zc_real) :: r(size(v, 1))
    integer :: i, n
    n = size(v, 1)
    do i = 1, n
      r(i) = (-1)**(n + i)*determinant(without(v, i))
    end do
  end function

  pure function without(v, i) result(r)
    real(zc_real), intent(in) :: v(:,:)
    integer, intent(in) :: i
    real(zc_real) :: r(size(v, 1) - 1, size(v, 2))
    r(:i - 1,:) = v(:i - 1,:)
    r(i:,:) = v(i + 1:,:)
  end function

  pure recursive function determinant(m) result(r)
    real(zc_real), intent(in) :: m(:,:)
    real(zc_real) :: r
    integer :: i
    if (size(m) == 1) then
      r = m(1, 1)
      return
    end if
    r = 0
    do i = 1, size(m, 1)
      r = r + (-1)**(1 + i)*m(i, 1)*determinant(without(m(:,2:), i))
    end do
  end function
end module zc_cross_products

module ZentricaSheep
  use zc_numbers
  use zc_int_lists
  use zc_real_lists
  use zc_text_lists
  use zc_logical_lists
  use zc_int_real_lists
  use zc_real_int_lists
  use zc_int_products
  use zc_real_products
  use zc_int_real_products
  use zc_real_int_products
  use zc_cross_products
  implicit none
end module ZentricaSheep
