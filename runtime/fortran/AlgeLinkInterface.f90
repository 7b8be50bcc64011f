! What generated wrappers say to the host, over one link of AlgeLink.
!
! A wrapper reads its arguments in their order, calls the function and writes the result:
!
!   getint(i), getint(b)       i integer(zc_int), b logical: 0 is false
!   getdouble(x)               x real(zc_real); an integer on the link counts as a real
!   getcomplex(z)              z complex(zc_real); Complex[re, im] or a number
!   getstr(s, n)               s character(len=zc_strlen); n integer(zc_int), its length without padding
!   getNint(a), getNdouble(a), getNcomplex(a), getNstr(a)
!                              a pointer to a new array of rank 1; NN, NNN and NNNN are ranks 2 to 4; getNint is for
!                              integers and logicals
!   putint(i), putint(b), putdouble(x), putcomplex(z), putstr(s), putNint(a), ...
!                              the same values, arrays of any size; the blanks at the end of a text are not sent
!   putnull()                  the symbol Null
!   ALIF_LIST(n)               opens a list of n results, which follow
!
! The dimensions of arrays are those of the model in reverse. A function that the host evaluates asks for its value so:
!
!   ALIF_START(n, name)        opens the question name[...] with n arguments; the put family sends them
!   ALIF_WAIT()                sends it and waits for the answer; calls of the host that come before are served
!   cbgetint(i), cbgetdouble(x), cbgetcomplex(z), cbgetstr(s), cbgetNint(a), ...
!                              the answer; like the get family, but a text is told without its length
!   cbgetnull()                an answer that nobody wants
!
! A program names its wrappers, opens the link and serves the host until that ends the link; oztm writes it:
!
!   external :: al_force
!   call ALIF_EVALUATE('BeginPackage["Bumper`"]')
!   call ALIF_INSTALL('force[ x_Real]', '{x}', al_force)
!   call ALIF_MAIN()
!
!   ALIF_INSTALL(pattern, arguments, wrapper)   the texts behind :Pattern: and :Arguments: of the link template
!   ALIF_EVALUATE(text)        what the host evaluates between the definitions, as behind :Evaluate:
!   ALIF_MAIN()                opens the link that the command line names, and serves; the status of the program is 0 if
!                              the host said that it ends, and 1 if the link was lost
!   ALIF_OPEN(arguments)       for programs that do more: the link that the text names, as ALOpenString takes it
!   ALIF_SERVE(orderly)        serves until the link ends; orderly: whether the host said so
!
! When the link fails, or an argument is no value of its type, there is nothing that a wrapper could go on with: a line
! on standard error tells the reason, and the program stops with status 1.

! Of algelink.h.
module alif_library
  use, intrinsic :: iso_c_binding
  implicit none

  interface
#define OF_LINK(NAME) integer(c_int) function NAME(link) bind(c, name='NAME'); import; type(c_ptr), value :: link; end
OF_LINK(ALConnect)
OF_LINK(ALWaitForLinkActivity)
OF_LINK(ALNextPacket)
OF_LINK(ALNewPacket)
OF_LINK(ALGetType)
OF_LINK(ALEndPacket)
OF_LINK(ALFlush)
#undef OF_LINK
    function ALInitialize(parameters) bind(c, name='ALInitialize') result(env)
      import c_ptr
      type(c_ptr), value :: parameters
      type(c_ptr) :: env
    end function
    function ALOpenString(env, commandline, error) bind(c, name='ALOpenString') result(link)
      import c_ptr, c_int, c_char
      type(c_ptr), value :: env
      character(kind=c_char), intent(in) :: commandline(*)
      integer(c_int), intent(out) :: error
      type(c_ptr) :: link
    end function
    subroutine ALClose(link) bind(c, name='ALClose')
      import c_ptr
      type(c_ptr), value :: link
    end subroutine
    function ALCreateMessageHandler(env, handler, unused) bind(c, name='ALCreateMessageHandler') result(object)
      import c_ptr, c_funptr
      type(c_ptr), value :: env, unused
      type(c_funptr), value :: handler
      type(c_ptr) :: object
    end function
    function ALSetMessageHandler(link, object) bind(c, name='ALSetMessageHandler') result(done)
      import c_ptr, c_int
      type(c_ptr), value :: link, object
      integer(c_int) :: done
    end function
    function ALErrorMessage(link) bind(c, name='ALErrorMessage') result(text)
      import c_ptr
      type(c_ptr), value :: link
      type(c_ptr) :: text
    end function
    function ALTestHead(link, head, n) bind(c, name='ALTestHead') result(done)
      import c_ptr, c_int, c_char
      type(c_ptr), value :: link
      character(kind=c_char), intent(in) :: head(*)
      integer(c_int), intent(out) :: n
      integer(c_int) :: done
    end function
    function ALGetInteger(link, i) bind(c, name='ALGetInteger') result(done)
      import c_ptr, c_int
      type(c_ptr), value :: link
      integer(c_int), intent(out) :: i
      integer(c_int) :: done
    end function
    function ALGetReal(link, x) bind(c, name='ALGetReal') result(done)
      import c_ptr, c_int, c_double
      type(c_ptr), value :: link
      real(c_double), intent(out) :: x
      integer(c_int) :: done
    end function
    function ALGetByteString(link, bytes, n) bind(c, name='ALGetByteString') result(done)
      import c_ptr, c_int, c_size_t
      type(c_ptr), value :: link
      type(c_ptr), intent(out) :: bytes
      integer(c_size_t), intent(out) :: n
      integer(c_int) :: done
    end function
    subroutine ALReleaseByteString(link, bytes) bind(c, name='ALReleaseByteString')
      import c_ptr
      type(c_ptr), value :: link, bytes
    end subroutine
    function ALPutInteger(link, i) bind(c, name='ALPutInteger') result(done)
      import c_ptr, c_int
      type(c_ptr), value :: link
      integer(c_int), value :: i
      integer(c_int) :: done
    end function
    function ALPutReal(link, x) bind(c, name='ALPutReal') result(done)
      import c_ptr, c_int, c_double
      type(c_ptr), value :: link
      real(c_double), value :: x
      integer(c_int) :: done
    end function
    function ALPutByteString(link, bytes, n) bind(c, name='ALPutByteString') result(done)
      import c_ptr, c_int, c_size_t, c_char
      type(c_ptr), value :: link
      character(kind=c_char), intent(in) :: bytes(*)
      integer(c_size_t), value :: n
      integer(c_int) :: done
    end function
    function ALPutFunction(link, head, n) bind(c, name='ALPutFunction') result(done)
      import c_ptr, c_int, c_char
      type(c_ptr), value :: link
      character(kind=c_char), intent(in) :: head(*)
      integer(c_int), value :: n
      integer(c_int) :: done
    end function
    function ALPutSymbol(link, name) bind(c, name='ALPutSymbol') result(done)
      import c_ptr, c_int, c_char
      type(c_ptr), value :: link
      character(kind=c_char), intent(in) :: name(*)
      integer(c_int) :: done
    end function
  end interface
end module alif_library

! The link, and single values on it.
module alif_elements
  use alif_library
  use, intrinsic :: iso_fortran_env, only: error_unit
  use ZentricaPrecision
  implicit none
  private
  public :: alif_link, alif_check, alif_fail, list_head, read_element, write_element, read_text_and_length, &
     end_answer, ALIF_LIST, c_text

  type(c_ptr), save :: alif_link = c_null_ptr

  integer(c_int), parameter :: function_token = 5

  interface read_element
    module procedure read_int, read_logical, read_real, read_complex, read_text
  end interface
  interface write_element
    module procedure write_int, write_logical, write_real, write_complex, write_text
  end interface

contains

  function c_text(text) result(r)
    character(len=*), intent(in) :: text
    character(kind=c_char, len=:), allocatable :: r
    r = trim(text)//c_null_char
  end function

  subroutine alif_fail(reason)
    character(len=*), intent(in) :: reason
    write (error_unit, '(a)') 'AlgeLinkInterface: '//reason
    stop 1
  end subroutine

  ! What the link itself says went wrong.
  subroutine fail_with_message()
    character(kind=c_char), pointer :: text(:)
    character(len=200) :: reason
    type(c_ptr) :: message
    integer :: i
    reason = 'no link'
    if (c_associated(alif_link)) then
      message = ALErrorMessage(alif_link)
      call c_f_pointer(message, text, [len(reason)])
      reason = ''
      do i = 1, len(reason)
        if (text(i) == c_null_char) exit
        reason(i:i) = text(i)
      end do
    end if
    call alif_fail(trim(reason))
  end subroutine

  subroutine alif_check(done)
    integer(c_int), intent(in) :: done
    if (done == 0) call fail_with_message()
  end subroutine

  function list_head() result(n)
    integer(c_int) :: n
    call alif_check(ALTestHead(alif_link, c_text('List'), n))
  end function

  subroutine ALIF_LIST(n)
    integer(zc_int), intent(in) :: n
    call alif_check(ALPutFunction(alif_link, c_text('List'), int(n, c_int)))
  end subroutine

  ! What is left of an answer is dropped.
  subroutine end_answer()
    call alif_check(ALNewPacket(alif_link))
  end subroutine

  ! ---- reading

  subroutine read_int(i)
    integer(zc_int), intent(out) :: i
    integer(c_int) :: got
    call alif_check(ALGetInteger(alif_link, got))
    i = got
  end subroutine

  subroutine read_logical(b)
    logical, intent(out) :: b
    integer(c_int) :: got
    call alif_check(ALGetInteger(alif_link, got))
    b = got /= 0
  end subroutine

  subroutine read_real(x)
    real(zc_real), intent(out) :: x
    call alif_check(ALGetReal(alif_link, x))
  end subroutine

  subroutine read_complex(z)
    complex(zc_real), intent(out) :: z
    real(zc_real) :: x, y
    integer(c_int) :: n
    y = 0
    if (ALGetType(alif_link) == function_token) then
      call alif_check(ALTestHead(alif_link, c_text('Complex'), n))
      if (n /= 2) call alif_fail('Complex has two arguments')
      call read_real(x)
      call read_real(y)
    else
      call read_real(x)
    end if
    z = cmplx(x, y, zc_real)
  end subroutine

  subroutine read_text(s)
    character(len=zc_strlen), intent(out) :: s
    integer(zc_int) :: n
    call read_text_and_length(s, n)
  end subroutine

  subroutine read_text_and_length(s, n)
    character(len=zc_strlen), intent(out) :: s
    integer(zc_int), intent(out) :: n
    character(kind=c_char), pointer :: text(:)
    type(c_ptr) :: bytes
    integer(c_size_t) :: length
    integer :: i
    call alif_check(ALGetByteString(alif_link, bytes, length))
    if (length > zc_strlen) call alif_fail('a text is longer than a variable can hold')
    n = int(length, zc_int)
    call c_f_pointer(bytes, text, [n])
    s = ''
    do i = 1, n
      s(i:i) = text(i)
    end do
    call ALReleaseByteString(alif_link, bytes)
  end subroutine

  ! ---- writing

  subroutine write_int(i)
    integer(zc_int), intent(in) :: i
    call alif_check(ALPutInteger(alif_link, int(i, c_int)))
  end subroutine

  subroutine write_logical(b)
    logical, intent(in) :: b
    call alif_check(ALPutInteger(alif_link, merge(1_c_int, 0_c_int, b)))
  end subroutine

  subroutine write_real(x)
    real(zc_real), intent(in) :: x
    call alif_check(ALPutReal(alif_link, x))
  end subroutine

  subroutine write_complex(z)
    complex(zc_real), intent(in) :: z
    call alif_check(ALPutFunction(alif_link, c_text('Complex'), 2_c_int))
    call write_real(real(z, zc_real))
    call write_real(aimag(z))
  end subroutine

  subroutine write_text(s)
    character(len=*), intent(in) :: s
    call alif_check(ALPutByteString(alif_link, s, int(len_trim(s), c_size_t)))
  end subroutine
end module alif_elements

module alif_int_values
#define ELEMENT integer(zc_int)
#define STORED integer(zc_int)
#include "alif_values.inc"
#undef ELEMENT
#undef STORED
end module

module alif_logical_values
#define ELEMENT logical
#define STORED logical
#include "alif_values.inc"
#undef ELEMENT
#undef STORED
end module

module alif_real_values
#define ELEMENT real(zc_real)
#define STORED real(zc_real)
#include "alif_values.inc"
#undef ELEMENT
#undef STORED
end module

module alif_complex_values
#define ELEMENT complex(zc_real)
#define STORED complex(zc_real)
#include "alif_values.inc"
#undef ELEMENT
#undef STORED
end module

module alif_text_values
#define ELEMENT character(len=*)
#define STORED character(len=zc_strlen)
#include "alif_values.inc"
#undef ELEMENT
#undef STORED
end module

module AlgeLinkInterface
  use ZentricaPrecision
  use alif_library
  use alif_elements, getstr => read_text_and_length
  use alif_int_values, only: getint => get_0, putint => put_0, cbgetint => cbget_0, &
    getNint => get_1, getNNint => get_2, getNNNint => get_3, getNNNNint => get_4, &
    putNint => put_1, putNNint => put_2, putNNNint => put_3, putNNNNint => put_4, &
    cbgetNint => cbget_1, cbgetNNint => cbget_2, cbgetNNNint => cbget_3, cbgetNNNNint => cbget_4
  use alif_logical_values, only: getint => get_0, putint => put_0, cbgetint => cbget_0, &
    getNint => get_1, getNNint => get_2, getNNNint => get_3, getNNNNint => get_4, &
    putNint => put_1, putNNint => put_2, putNNNint => put_3, putNNNNint => put_4, &
    cbgetNint => cbget_1, cbgetNNint => cbget_2, cbgetNNNint => cbget_3, cbgetNNNNint => cbget_4
  use alif_real_values, only: getdouble => get_0, putdouble => put_0, cbgetdouble => cbget_0, &
    getNdouble => get_1, getNNdouble => get_2, getNNNdouble => get_3, &
    getNNNNdouble => get_4, &
    putNdouble => put_1, putNNdouble => put_2, putNNNdouble => put_3, putNNNNdouble => put_4, &
    cbgetNdouble => cbget_1, cbgetNNdouble => cbget_2, cbgetNNNdouble => cbget_3, cbgetNNNNdouble => cbget_4
  use alif_complex_values, only: getcomplex => get_0, putcomplex => put_0, cbgetcomplex => cbget_0, &
    getNcomplex => get_1, getNNcomplex => get_2, &
    getNNNcomplex => get_3, getNNNNcomplex => get_4, &
    putNcomplex => put_1, putNNcomplex => put_2, putNNNcomplex => put_3, putNNNNcomplex => put_4, &
    cbgetNcomplex => cbget_1, cbgetNNcomplex => cbget_2, cbgetNNNcomplex => cbget_3, cbgetNNNNcomplex => cbget_4
  use alif_text_values, only: putstr => put_0, cbgetstr => cbget_0, &
    getNstr => get_1, getNNstr => get_2, getNNNstr => get_3, getNNNNstr => get_4, &
    putNstr => put_1, putNNstr => put_2, putNNNstr => put_3, putNNNNstr => put_4, &
    cbgetNstr => cbget_1, cbgetNNstr => cbget_2, cbgetNNNstr => cbget_3, cbgetNNNNstr => cbget_4
  implicit none
  private
  public :: getint, getdouble, getcomplex, getstr
  public :: getNint, getNNint, getNNNint, getNNNNint
  public :: getNdouble, getNNdouble, getNNNdouble, getNNNNdouble
  public :: getNcomplex, getNNcomplex, getNNNcomplex, getNNNNcomplex
  public :: getNstr, getNNstr, getNNNstr, getNNNNstr
  public :: putint, putdouble, putcomplex, putstr
  public :: putNint, putNNint, putNNNint, putNNNNint
  public :: putNdouble, putNNdouble, putNNNdouble, putNNNNdouble
  public :: putNcomplex, putNNcomplex, putNNNcomplex, putNNNNcomplex
  public :: putNstr, putNNstr, putNNNstr, putNNNNstr
  public :: cbgetint, cbgetdouble, cbgetcomplex, cbgetstr
  public :: cbgetNint, cbgetNNint, cbgetNNNint, cbgetNNNNint
  public :: cbgetNdouble, cbgetNNdouble, cbgetNNNdouble, cbgetNNNNdouble
  public :: cbgetNcomplex, cbgetNNcomplex, cbgetNNNcomplex, cbgetNNNNcomplex
  public :: cbgetNstr, cbgetNNstr, cbgetNNNstr, cbgetNNNNstr
  public :: putnull, cbgetnull, ALIF_START, ALIF_WAIT, ALIF_LIST
  public :: ALIF_INSTALL, ALIF_EVALUATE, ALIF_MAIN, ALIF_OPEN, ALIF_SERVE

  abstract interface
    subroutine alif_wrapper()
    end subroutine
  end interface

  type installed
    character(len=:), allocatable :: pattern, arguments
    procedure(alif_wrapper), pointer, nopass :: wrapper => null()  ! null: the pattern is a text to evaluate
  end type

  type(installed), allocatable, save :: table(:)

  integer(c_int), parameter :: return_packet = 3, call_packet = 7, terminate_message = 1
  integer(c_int), save :: ended = 0  ! set by the message handler, on another thread

contains

  subroutine putnull()
    call alif_check(ALPutSymbol(alif_link, c_text('Null')))
  end subroutine

  subroutine cbgetnull()
    call end_answer()
  end subroutine

  ! ---- functions that the host evaluates

  subroutine ALIF_START(n, name)
    integer(zc_int), intent(in) :: n
    character(len=*), intent(in) :: name
    call alif_check(ALPutFunction(alif_link, c_text('EvaluatePacket'), 1_c_int))
    call alif_check(ALPutFunction(alif_link, c_text(name), int(n, c_int)))
  end subroutine

  recursive subroutine ALIF_WAIT()
    integer(c_int) :: code
    call alif_check(ALEndPacket(alif_link))
    call end_answer()  ! the rest of the call that asks
    do
      code = ALNextPacket(alif_link)
      call alif_check(code)
      if (code == return_packet) return
      if (code == call_packet) then
        call serve_call()
      else
        call end_answer()
      end if
    end do
  end subroutine

  ! ---- programs

  subroutine ALIF_OPEN(arguments)
    character(len=*), intent(in) :: arguments
    type(c_ptr) :: env
    integer(c_int) :: error
    env = ALInitialize(c_null_ptr)
    if (.not. c_associated(env)) call alif_fail('out of memory')
    alif_link = ALOpenString(env, c_text(arguments), error)
    if (.not. c_associated(alif_link)) call alif_fail('cannot open the link '//arguments)
    call alif_check(ALSetMessageHandler(alif_link, ALCreateMessageHandler(env, c_funloc(note_message), c_null_ptr)))
  end subroutine

  subroutine ALIF_MAIN()
    character(len=:), allocatable :: arguments
    logical :: orderly
    integer :: i
    arguments = ''
    do i = 1, command_argument_count()
      arguments = arguments//' '//argument(i)
    end do
    call ALIF_OPEN(arguments)
    call ALIF_SERVE(orderly)
    if (.not. orderly) stop 1
  end subroutine

  function argument(i) result(r)
    integer, intent(in) :: i
    character(len=:), allocatable :: r
    integer :: n
    call get_command_argument(i, length=n)
    allocate (character(len=n) :: r)
    call get_command_argument(i, r)
  end function

  subroutine note_message(link, message, detail) bind(c)
    type(c_ptr), value :: link
    integer(c_int), value :: message, detail
    if (c_associated(link) .and. detail >= 0 .and. message == terminate_message) ended = 1
  end subroutine

  subroutine ALIF_INSTALL(pattern, arguments, wrapper)
    character(len=*), intent(in) :: pattern, arguments
    procedure(alif_wrapper) :: wrapper
    type(installed) :: entry
    entry%pattern = pattern
    entry%arguments = arguments
    entry%wrapper => wrapper
    call append(entry)
  end subroutine

  subroutine ALIF_EVALUATE(text)
    character(len=*), intent(in) :: text
    type(installed) :: entry
    entry%pattern = text
    entry%arguments = ''
    call append(entry)
  end subroutine

  subroutine append(entry)
    type(installed), intent(in) :: entry
    if (.not. allocated(table)) allocate (table(0))
    table = [table, entry]
  end subroutine

  ! The number of a wrapper is its place in the table, from 0.
  subroutine define_all()
    integer :: i
    do i = 1, size(table)
      if (.not. associated(table(i)%wrapper)) then
        call write_element(table(i)%pattern)
        cycle
      end if
      call alif_check(ALPutFunction(alif_link, c_text('DefineExternal'), 3_c_int))
      call write_element(table(i)%pattern)
      call write_element(table(i)%arguments)
      call write_element(i - 1)
    end do
    call alif_check(ALPutSymbol(alif_link, c_text('End')))
    call alif_check(ALFlush(alif_link))
  end subroutine

  recursive subroutine serve_call()
    integer(zc_int) :: number
    integer(c_int) :: n
    call read_element(number)
    if (number < 0 .or. number >= size(table)) call alif_fail('a call of a function that is not installed')
    if (.not. associated(table(number + 1)%wrapper)) call alif_fail('a call of a function that is not installed')
    n = list_head()
    call table(number + 1)%wrapper()
    call alif_check(ALEndPacket(alif_link))
    call end_answer()
  end subroutine

  subroutine ALIF_SERVE(orderly)
    logical, intent(out) :: orderly
    integer(c_int) :: code
    if (.not. allocated(table)) allocate (table(0))
    call alif_check(ALConnect(alif_link))
    call define_all()
    do while (ALWaitForLinkActivity(alif_link) == 1)
      code = ALNextPacket(alif_link)
      if (code == 0) exit
      if (code == call_packet) then
        call serve_call()
      else
        call end_answer()
      end if
    end do
    call ALClose(alif_link)
    alif_link = c_null_ptr
    orderly = ended /= 0
  end subroutine
end module AlgeLinkInterface
