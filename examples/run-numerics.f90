! Calls what is generated in Fortran from numerics.oz.
program run_numerics
  use ZentricaPrecision
  use zc_Numerics
  implicit none
  real(zc_real) :: slope, crossing, grid(4,3), swept(4,3), change

  tolerance = 1e-12_zc_real
  limit = 200
  call expect('polynomialRoot', polynomialRoot(1.0_zc_real, 3, real([-2, 0, 1], zc_real)), sqrt(2.0_zc_real))
  call expect('commonDivisor', real(commonDivisor(84, 36), zc_real), 12.0_zc_real)
  call straightLine(3, real([1, 2, 4], zc_real), [2.5_zc_real, 2.0_zc_real, 1.0_zc_real], crossing, slope)
  call expect('straightLine', slope, -0.5_zc_real)
  call expect('the crossing of it', crossing, 3.0_zc_real)

  ! 3 rows of 4 in the model; the first index here counts within a row.
  grid = 0
  grid(:,1) = 8
  call relaxed(3, 4, grid, 0.5_zc_real, swept, change)
  call expect('relaxed', swept(2,2), 1.0_zc_real)
  call expect('its second place', swept(3,2), 1.125_zc_real)
  print '(a)', 'passed'

contains

  subroutine expect(what, got, wanted)
    character(len=*), intent(in) :: what
    real(zc_real), intent(in) :: got, wanted
    if (abs(got - wanted) <= 1e-12_zc_real*abs(wanted)) return
    print *, what, ' gives ', got, ' instead of ', wanted
    stop 1
  end subroutine
end program
