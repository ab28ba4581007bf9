! The section of the file named on the command line, its results and bars in hexadecimal. A host in Fortran.
! Built with the traditional preprocessor, which puts macro arguments into strings too.
module hexadecimal
  use, intrinsic :: iso_c_binding
  implicit none
contains
  subroutine show(name, values)
    character(*), intent(in) :: name
    real(c_double), intent(in) :: values(:)
    integer :: i
    do i = 1, size(values)
      write (*, '(a, 1x, z16.16)') name, transfer(values(i), 0_c_int64_t)
    end do
  end subroutine
  subroutine show_offset(name, member, start)
    character(*), intent(in) :: name
    type(c_ptr), intent(in) :: member, start
    write (*, '(a, 1x, i0)') name, transfer(member, 0_c_intptr_t) - transfer(start, 0_c_intptr_t)
  end subroutine
end module

program host
  use velquor
  use hexadecimal
  implicit none
  character(1000) :: path
  integer(c_int32_t) :: status, nnodes, nelems, npoints, b
  integer(c_int32_t), allocatable :: elements(:, :)
  real(c_double), allocatable :: nodes(:, :), props(:, :), nodeout(:, :), elemout(:, :, :)
  real(c_double) :: result(0:VQ_NSLOTS - 1) = 0
  type(VYZTUZE_INFO), allocatable, target :: points(:)
  call get_command_argument(1, path)
  open (10, file=path, status='old', action='read')
  read (10, *) status, nnodes, nelems, npoints
  allocate (nodes(nnodes, 2), elements(nelems, 4), props(nelems, VQ_NCOLUMNS), points(npoints))
  allocate (nodeout(nnodes, 3), elemout(12, 4, nelems))
  read (10, *) nodes, elements, props
  do b = 1, npoints
    associate (p => points(b))
      read (10, *) p%NODE, p%ELEMENT, p%AREA, p%EMODUL, p%GMODUL, p%RADIUS, p%BARWEIGHT
    end associate
  end do
  result(VQ_MODE_SLOT) = VQ_PLASTIC
  call vq_velquor(status, nodes, nnodes, elements, nelems, props, npoints, points, result, nodeout, elemout)

  write (*, '(a, 1x, i0)') 'status', status
#define SLOT(name, value) call show("name", result(name:name)); if (name /= value) error stop "name";
#define NAME(name, value) write (*, '(a, 1x, i0)') "name", name;
#define FIELD(name, value) call show_offset("name", c_loc(points(1)%name), c_loc(points(1)));
#include "names.inc"
  do b = 1, npoints
    write (*, '(a, 5(1x, i0))') 'nodes', points(b)%NELNODES, points(b)%ELNODES
    call show('shape', points(b)%SHAPE)
    call show('rs', points(b)%RS)
    call show('stress', points(b)%STRESS)
  end do
  call show('node', reshape(nodeout, [3*nnodes]))
  call show('element', reshape(elemout, [48*nelems]))
  if (status /= VQ_DONE .or. c_sizeof(points(1)) /= 184) error stop
end program
