! Velquor from Fortran: the declarations of velquor.h and velquor_levels.h, which tell everything about each of them.
! Tables have Fortran's own order; nodes, elements, groups and columns count from 1, the slots of the result from 0.
module velquor
  use, intrinsic :: iso_c_binding, only: c_int, c_int32_t, c_double, c_ptr, c_funptr
  implicit none
  private :: c_int, c_int32_t, c_double, c_ptr, c_funptr

  ! Status on return
  integer(c_int), parameter :: VQ_DONE = 0, VQ_REFUSED = 1, VQ_NOT_SOLVED = 2, VQ_OUT_OF_MEMORY = 3

  ! Calculation mode, in slot VQ_MODE_SLOT on entry
  integer(c_int), parameter :: VQ_ELASTIC = 0, VQ_PLASTIC = 1, VQ_PLASTIC_TWO = 11, VQ_PLASTIC_TWO_21 = 21
  integer(c_int), parameter :: VQ_MODE_SLOT = 31

  ! Columns of the property table
  integer(c_int), parameter :: VQ_EMOD = 1, VQ_GMOD = 2, VQ_CARRIED = 3, VQ_COUPLING = 4, VQ_GROUP = 5, VQ_MATFLAG = 6
  integer(c_int), parameter :: VQ_FNEG = 7, VQ_FPOS = 8, VQ_UNITWEIGHT = 9, VQ_TENTH = 10, VQ_NCOLUMNS = 10

  ! Slots of the result: stiffnesses, centroid and shear centre, warping, skew coefficients
  integer(c_int), parameter :: VQ_EA = 0, VQ_IYY = 1, VQ_IZZ = 2, VQ_DYZ = 3, VQ_YC = 4, VQ_ZC = 5
  integer(c_int), parameter :: VQ_SCY = 6, VQ_SCZ = 7, VQ_SCU = 8, VQ_SCV = 9, VQ_GJ = 10, VQ_GAY = 11, VQ_GAZ = 12
  integer(c_int), parameter :: VQ_IW = 13, VQ_ALPHA = 14, VQ_I1 = 15, VQ_I2 = 16, VQ_GAU = 17, VQ_GAV = 18, VQ_GAUV = 19
  integer(c_int), parameter :: VQ_IWS = 20, VQ_WT = 21, VQ_RZ = 22, VQ_RY = 23, VQ_RV = 24, VQ_RU = 25, VQ_WR1 = 26
  integer(c_int), parameter :: VQ_WR2 = 27, VQ_ANET = 28
  ! plastic axes, moduli and moments in the host's axes
  integer(c_int), parameter :: VQ_PLAXIS_Y = 29, VQ_PLAXIS_Z = 30, VQ_PLAXIS_Y_NEG = 31, VQ_PLAXIS_Z_NEG = 32
  integer(c_int), parameter :: VQ_PLMOD_Z = 33, VQ_PLMOD_Y = 34, VQ_PLMOD_Z_NEG = 35, VQ_PLMOD_Y_NEG = 36
  integer(c_int), parameter :: VQ_PLMOM_Z = 37, VQ_PLMOM_Y = 38, VQ_PLMOM_Z_NEG = 39, VQ_PLMOM_Y_NEG = 40
  ! and in the principal axes
  integer(c_int), parameter :: VQ_PLAXIS_U = 41, VQ_PLAXIS_V = 42, VQ_PLAXIS_U_NEG = 43, VQ_PLAXIS_V_NEG = 44
  integer(c_int), parameter :: VQ_PLMOD_V = 45, VQ_PLMOD_U = 46, VQ_PLMOD_V_NEG = 47, VQ_PLMOD_U_NEG = 48
  integer(c_int), parameter :: VQ_PLMOM_V = 49, VQ_PLMOM_U = 50, VQ_PLMOM_V_NEG = 51, VQ_PLMOM_U_NEG = 52
  ! centre of the coupled groups, weight, reference moduli
  integer(c_int), parameter :: VQ_COUP1 = 53, VQ_COUP2 = 54, VQ_WEIGHT = 55, VQ_EREF = 56, VQ_GREF = 57, VQ_NSLOTS = 58

  ! Levels; of a finding where it lies, what comes of it, and its reason
  integer(c_int), parameter :: VQ_MAXLEVELS = 6
  integer(c_int), parameter :: VQ_IN_CALL = 0, VQ_IN_NODES = 1, VQ_IN_ELEMENTS = 2, VQ_IN_PROPS = 3, VQ_IN_POINTS = 4
  integer(c_int), parameter :: VQ_WARNING = 1, VQ_ERROR = 2
  integer(c_int), parameter :: VQ_NULL_TABLE = 1, VQ_NEGATIVE_COUNT = 2, VQ_COUNT_TOO_LARGE = 3, VQ_NOT_FINITE = 4
  integer(c_int), parameter :: VQ_NODE_OUTSIDE = 5, VQ_NODE_TWICE = 6, VQ_CLOCKWISE = 7, VQ_EDGE_SHORT = 8
  integer(c_int), parameter :: VQ_ELEMENT_SMALL = 9, VQ_CORNER_BAD = 10, VQ_GROUP_OUTSIDE = 11, VQ_NO_REFERENCE = 12
  integer(c_int), parameter :: VQ_REFERENCE_BAD = 13, VQ_NODE_TAKEN = 14, VQ_HOST_OUTSIDE = 15
  integer(c_int), parameter :: VQ_LOOSE_PIECE = 16, VQ_MIDDLE_AT_100 = 17, VQ_FLAT_TRIANGLE = 18, VQ_OBLONG = 19
  integer(c_int), parameter :: VQ_COUPLING_ZERO = 20, VQ_STRENGTH_MISSING = 21, VQ_STRENGTH_MIXED = 22
  integer(c_int), parameter :: VQ_STRENGTH_NEGATIVE = 23, VQ_BAR_OUTSIDE = 24, VQ_HINGE = 25
  integer(c_int), parameter :: VQ_COUPLING_UNLIKE = 26

  ! A reinforcement bar, 184 bytes. The library fills NELNODES, ELNODES, SHAPE, RS and STRESS.
  type, bind(c) :: VYZTUZE_INFO
    integer(c_int32_t) :: NODE = 0, not_read_1(2) = 0, ELEMENT = 0, NELNODES = 0, ELNODES(4) = 0, gap = 0
    real(c_double) :: AREA = 0, EMODUL = 0, GMODUL = 0, RADIUS = 0, not_read_2(3) = 0, BARWEIGHT = 0
    real(c_double) :: SHAPE(4) = 0, RS(2) = 0, STRESS(4) = 0
  end type

  ! What vq_check says of one row of a table.
  type, bind(c) :: vq_finding
    integer(c_int32_t) :: TABLE = 0, ROW = 0, REASON = 0, SEVERITY = 0
  end type

  abstract interface
    ! A host's routine that places a new node on the true course of its edge from node A to node B, t of the way along.
    subroutine vq_place(context, A, B, t, YZ) bind(c)
      import :: c_ptr, c_int32_t, c_double
      type(c_ptr), value :: context
      integer(c_int32_t), value :: A, B
      real(c_double), value :: t
      real(c_double), intent(inout) :: YZ(2)
    end subroutine
  end interface

  interface
    ! Calculates one section. STATUS holds the number of groups and RESULT(VQ_MODE_SLOT) the mode before every call.
    ! Where there are no bars, POINTS is an array of size 0. ELEMOUT holds, for corner p of element e and load case
    ! q = 1 to 4, the shear stresses TAUY in (2q - 1, p, e) and TAUZ in (2q, p, e), and the axial stress SIGMA in
    ! (8 + q, p, e).
    subroutine vq_velquor(STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, NPOINTS, POINTS, RESULT, NODEOUT, ELEMOUT) &
        bind(c)
      import :: c_int32_t, c_double, VYZTUZE_INFO, VQ_NCOLUMNS, VQ_NSLOTS
      integer(c_int32_t), intent(inout) :: STATUS
      integer(c_int32_t), value :: NNODES, NELEMS, NPOINTS
      real(c_double), intent(in) :: NODES(NNODES, 2), PROPS(NELEMS, VQ_NCOLUMNS)
      integer(c_int32_t), intent(in) :: ELEMENTS(NELEMS, 4)
      type(VYZTUZE_INFO), intent(inout) :: POINTS(NPOINTS)
      real(c_double), intent(inout) :: RESULT(0:VQ_NSLOTS - 1), NODEOUT(NNODES, 3), ELEMOUT(12, 4, NELEMS)
    end subroutine

    ! The same on nested meshes. SHARP is c_null_ptr or c_loc of NNODES integers of 32 bits, place c_null_funptr or
    ! c_funloc of a routine as vq_place, which gets context.
    subroutine vq_levels(STATUS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, NPOINTS, POINTS, RESULT, NODEOUT, ELEMOUT, &
        LEVELS, BOUNDS, SHARP, place, context) bind(c)
      import :: c_int32_t, c_double, c_ptr, c_funptr, VYZTUZE_INFO, VQ_NCOLUMNS, VQ_NSLOTS
      integer(c_int32_t), intent(inout) :: STATUS, LEVELS
      integer(c_int32_t), value :: NNODES, NELEMS, NPOINTS
      real(c_double), intent(in) :: NODES(NNODES, 2), PROPS(NELEMS, VQ_NCOLUMNS)
      integer(c_int32_t), intent(in) :: ELEMENTS(NELEMS, 4)
      type(VYZTUZE_INFO), intent(inout) :: POINTS(NPOINTS)
      real(c_double), intent(inout) :: RESULT(0:VQ_NSLOTS - 1), NODEOUT(NNODES, 3), ELEMOUT(12, 4, NELEMS)
      real(c_double), intent(inout) :: BOUNDS(0:VQ_NSLOTS - 1)
      type(c_ptr), value :: SHARP, context
      type(c_funptr), value :: place
    end subroutine

    ! Looks at the tables of a call. The number of findings, of which the first CAPACITY are in FINDINGS; -1: no memory.
    function vq_check(NGROUPS, NODES, NNODES, ELEMENTS, NELEMS, PROPS, NPOINTS, POINTS, mode, CAPACITY, FINDINGS) &
        bind(c) result(count)
      import :: c_int32_t, c_double, VYZTUZE_INFO, vq_finding, VQ_NCOLUMNS
      integer(c_int32_t), value :: NGROUPS, NNODES, NELEMS, NPOINTS, CAPACITY
      real(c_double), intent(in) :: NODES(NNODES, 2), PROPS(NELEMS, VQ_NCOLUMNS)
      integer(c_int32_t), intent(in) :: ELEMENTS(NELEMS, 4)
      type(VYZTUZE_INFO), intent(in) :: POINTS(NPOINTS)
      real(c_double), value :: mode
      type(vq_finding), intent(inout) :: FINDINGS(CAPACITY)
      integer(c_int32_t) :: count
    end function

    ! The address of the reason's text in English, which ends with a null character.
    function vq_reason(REASON) bind(c) result(text)
      import :: c_int32_t, c_ptr
      integer(c_int32_t), value :: REASON
      type(c_ptr) :: text
    end function
  end interface
end module
