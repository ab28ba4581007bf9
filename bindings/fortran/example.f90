! A timber beam of 120 by 200 mm from its nodes to its values. Units N, mm.
program example
  use velquor
  use, intrinsic :: iso_c_binding, only: dp => c_double, c_int32_t
  implicit none
  integer(c_int32_t), parameter :: ny = 24, nz = 40, nnodes = (ny + 1)*(nz + 1), nelems = ny*nz
  integer(c_int32_t) :: elements(nelems, 4), status, i, j, n
  real(dp) :: nodes(nnodes, 2), props(nelems, VQ_NCOLUMNS), result(0:VQ_NSLOTS - 1), nodeout(nnodes, 3)
  real(dp) :: elemout(12, 4, nelems)
  type(VYZTUZE_INFO) :: bars(0)

  do j = 0, nz
    do i = 0, ny
      n = 1 + i + (ny + 1)*j
      nodes(n, :) = [120._dp*i/ny, 200._dp*j/nz]
      if (i < ny .and. j < nz) elements(1 + i + ny*j, :) = [n, n + 1, n + ny + 2, n + ny + 1]  ! counter-clockwise
    end do
  end do
  props = 0
  props(:, VQ_EMOD) = 11000
  props(:, VQ_GMOD) = 690
  props(:, [VQ_COUPLING, VQ_GROUP, VQ_MATFLAG]) = 1

  result(VQ_MODE_SLOT) = VQ_ELASTIC
  status = 1  ! in: the number of groups
  call vq_velquor(status, nodes, nnodes, elements, nelems, props, 0, bars, result, nodeout, elemout)
  if (status /= VQ_DONE) error stop 'no results'

  print '(a, f12.1, a)', 'A   ', result(VQ_EA)/result(VQ_EREF), ' mm2'
  print '(a, es12.4, a)', 'Iy  ', result(VQ_IZZ)/result(VQ_EREF), ' mm4'
  print '(a, es12.4, a)', 'It  ', result(VQ_GJ)/result(VQ_GREF), ' mm4'
  print '(a, f12.1, a)', 'Asz ', result(VQ_GAZ)/result(VQ_GREF), ' mm2'
  ! A moment of 1 kNm about the strong axis: axial stress, load case 2, at each corner of each element.
  print '(a, f12.4, a)', 'sig ', 1e6_dp*maxval(elemout(8 + 2, :, :)), ' N/mm2'
end program
