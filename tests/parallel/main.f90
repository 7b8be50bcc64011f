! Calls the functions of tests/fortran/tasks.oz; every process calls them, one prints.
program main
  use ZentricaPrecision
  use zc_Tasks
  implicit none
  integer, external :: zc_init_func, zc_rank
  real(zc_real) :: s(4), g(3, 2), t(4)
  integer :: n
  call zc_init_parallel(zc_init_func)
  do n = 1, 3
    s = scaled((/ 1d0, 2d0, 3d0, 4d0 /), 0.5d0 * n)
    if (zc_rank() == 0) print '(4f9.3)', s
  end do
  g = grid(10d0)
  if (zc_rank() == 0) print '(6f9.3)', g
  t = twice((/ 1d0, 2d0, 3d0, 4d0 /))
  if (zc_rank() == 0) print '(4f9.3)', t
end program
