! The section of the file named on the command line, its results and bars in hexadecimal, then on two levels, and what
! is found where it has a group too many. A host in Fortran.
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
  ! Bends edges, differently at each end of them, by what has no rounding.
  subroutine place(context, A, B, t, YZ) bind(c)
    type(c_ptr), value :: context
    integer(c_int32_t), value :: A, B
    real(c_double), value :: t
    real(c_double), intent(inout) :: YZ(2)
    real(c_double), pointer :: bend
    call c_f_pointer(context, bend)
    YZ(1) = YZ(1) + (A + 2*B)*t*bend
  end subroutine
end module

program host
  use velquor
  use hexadecimal
  implicit none
  character(1000) :: path
  integer(c_int32_t) :: status, nnodes, nelems, npoints, b, groups, levels = 2, count
  integer(c_int32_t), allocatable :: elements(:, :)
  integer(c_int32_t), allocatable, target :: sharp(:)
  real(c_double), allocatable :: nodes(:, :), props(:, :), nodeout(:, :), elemout(:, :, :)
  real(c_double) :: result(0:VQ_NSLOTS - 1) = 0, bounds(0:VQ_NSLOTS - 1)
  real(c_double), target :: bend = 1._c_double/4096
  type(VYZTUZE_INFO), allocatable, target :: points(:)
  type(vq_finding), target :: found(9)
  procedure(vq_place), pointer :: placing
  call get_command_argument(1, path)
  open (10, file=path, status='old', action='read')
  read (10, *) status, nnodes, nelems, npoints
  allocate (nodes(nnodes, 2), elements(nelems, 4), props(nelems, VQ_NCOLUMNS), points(npoints))
  allocate (nodeout(nnodes, 3), elemout(12, 4, nelems), sharp(nnodes))
  read (10, *) nodes, elements, props
  do b = 1, npoints
    associate (p => points(b))
      read (10, *) p%NODE, p%ELEMENT, p%AREA, p%EMODUL, p%GMODUL, p%RADIUS, p%BARWEIGHT
    end associate
  end do
  result(VQ_MODE_SLOT) = VQ_PLASTIC
  groups = status
  call vq_velquor(status, nodes, nnodes, elements, nelems, props, npoints, points, result, nodeout, elemout)

  write (*, '(a, 1x, i0)') 'status', status
#define SLOT(name, value) call show("name", result(name:name)); if (name /= value) error stop "name";
#define NAME(name, value) write (*, '(a, 1x, i0)') "name", name;
#define FIELD(name, value) call show_offset("name", c_loc(points(1)%name), c_loc(points(1)));
#define PART(name, value) call show_offset("name", c_loc(found(1)%name), c_loc(found(1)));
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

  placing => place
  status = groups
  result(VQ_MODE_SLOT) = VQ_PLASTIC
  call vq_levels(status, nodes, nnodes, elements, nelems, props, npoints, points, result, nodeout, elemout, levels, &
    bounds, c_loc(sharp), c_funloc(placing), c_loc(bend))
  write (*, '(a, 1x, i0, a, 1x, i0)') 'status', status, ' levels', levels
  call show('result', result)
  call show('bounds', bounds)
  write (*, '("sharp ", i0)') sharp
  count = vq_check(1, nodes, nnodes, elements, nelems, props, npoints, points, real(VQ_PLASTIC, c_double), 9, found)
  do b = 1, count
    write (*, '(a, 4(1x, i0))') 'found', found(b)%TABLE, found(b)%ROW, found(b)%REASON, found(b)%SEVERITY
  end do
  if (c_sizeof(found(1)) /= 16) error stop
end program
