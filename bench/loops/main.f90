! Times the loops of loops.oz beside plain ones, and looks at what they compute. The argument is the number of steps of
! the costly task. Four numbers come out, each of the fastest of five rounds, in seconds: the cheap passes as tasks and as
! a plain loop, the costly ones as tasks and as a plain loop.
program main
  use ZentricaPrecision
  use zc_Loops
  implicit none
  integer, external :: zc_init_func, zc_rank
  integer, parameter :: n = 1000000, m = 50000
  real(zc_real), allocatable :: x(:), y(:), z(:)
  real(zc_real) :: fastest(4)
  integer :: round, i, steps
  character(len=20) :: argument

  call get_command_argument(1, argument)
  read (argument, *) steps
  call zc_init_parallel(zc_init_func)
  allocate(x(n), y(n), z(n))
  x = (/ (1d0 * i / n, i = 1, n) /)
  fastest = huge(1d0)
  do round = 1, 5
    call note(1, .true.)
    y = cheap(x, 3d0)
    call note(1, .false.)
    call note(2, .true.)
    do i = 1, n
      z(i) = x(i) * 3d0 + 1
    end do
    call note(2, .false.)
    if (any(y /= z)) error stop 'the cheap tasks are wrong'
    call note(3, .true.)
    y(1:m) = costly(x(1:m), steps)
    call note(3, .false.)
    ! Other processes wait for their shares meanwhile: one plain loop will do.
    if (round > 1) cycle
    call note(4, .true.)
    do i = 1, m
      z(i) = settled(x(i), steps)
    end do
    call note(4, .false.)
    if (any(y(1:m) /= z(1:m))) error stop 'the costly tasks are wrong'
  end do
  if (zc_rank() == 0) print '(4es14.6)', fastest

contains

  subroutine note(what, begins)
    integer, intent(in) :: what
    logical, intent(in) :: begins
    integer(8), save :: begun
    integer(8) :: now, rate
    call system_clock(now, rate)
    if (.not. begins) fastest(what) = min(fastest(what), real(now - begun, zc_real) / rate)
    begun = now
  end subroutine
end program
