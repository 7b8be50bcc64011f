! Kinds and lengths of the variables in generated text.
!
!   zc_int     kind of int: the kind of the literals 1, 2, 3
!   zc_real    kind of real: at least 15 digits
!   zc_strlen  length of every String variable; shorter texts are padded with blanks
module ZentricaPrecision
  implicit none
  private
  integer, parameter, public :: zc_int = kind(1)
  integer, parameter, public :: zc_real = selected_real_kind(15, 300)
  integer, parameter, public :: zc_strlen = 256

  ! Of a literal without a kind, such as the 1.0 in EXP(1.0), whatever options of the compiler make of it elsewhere.
  integer, parameter, public :: zc_single = selected_real_kind(6, 30)
end module ZentricaPrecision
