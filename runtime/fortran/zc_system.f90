! What all generated functions use besides the runtime itself. It is empty: a model with the name "system" gives a
! module of this name, and whoever links that one in leaves this one out.
module zc_system
  implicit none
end module zc_system
