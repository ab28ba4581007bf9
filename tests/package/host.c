/* A host in C: one element of 2 by 4, strong axis along Z, then the same with a coordinate that is no number, which is
 * refused; WITH_LEVELS also on three levels, and with the reason. Exits 0 when the libraries answer rightly. */
#include <math.h>
#include <stdio.h>
#include <velquor.h>
#ifdef WITH_LEVELS
#include <velquor_levels.h>
#endif

int main(void) {
    double nodes[] = {0, 2, 2, 0, /* Y */ 0, 0, 4, 4 /* Z */};
    const int32_t elements[] = {1, 2, 3, 4};
    const double props[VQ_NCOLUMNS] = {210e3, 81e3, 0, 1, 1, 1, 235, 235, 7.85, 0};
    double result[VQ_NSLOTS] = {0}, nodeout[4 * 3], elemout[48];
    int32_t status = 1;
    result[VQ_MODE_SLOT] = VQ_PLASTIC;
    vq_velquor(&status, nodes, 4, elements, 1, props, 0, NULL, result, nodeout, elemout);
    printf("velquor %d.%d.%d: status %d, A %g, Izz %g, Wpl %g\n", VQ_VERSION_MAJOR, VQ_VERSION_MINOR, VQ_VERSION_PATCH,
           (int)status, result[VQ_EA] / result[VQ_EREF], result[VQ_IZZ] / result[VQ_EREF], result[VQ_PLMOD_Z]);
    int right = status == VQ_DONE && fabs(result[VQ_EA] / 210e3 - 8) < 1e-12 &&
                fabs(result[VQ_IZZ] / 210e3 - 32.0 / 3) < 1e-12 && fabs(result[VQ_PLMOD_Z] - 8) < 1e-9;
#ifdef WITH_LEVELS
    double bounds[VQ_NSLOTS];
    int32_t levels = 3;
    vq_finding found[2];
    status = 1;
    result[VQ_MODE_SLOT] = VQ_ELASTIC;
    vq_levels(&status, nodes, 4, elements, 1, props, 0, NULL, result, nodeout, elemout, &levels, bounds, NULL, NULL,
              NULL);
    printf("levels %d: status %d, A %g -+ %g\n", (int)levels, (int)status, result[VQ_EA] / 210e3,
           bounds[VQ_EA] / 210e3);
    right = right && status == VQ_DONE && levels == 3 && fabs(result[VQ_EA] / 210e3 - 8) < 1e-12 && bounds[VQ_EA] < 1;
#endif
    nodes[2] = NAN;
#ifdef WITH_LEVELS
    right = right && vq_check(1, nodes, 4, elements, 1, props, 0, NULL, VQ_PLASTIC, 2, found) == 1 &&
            found[0].TABLE == VQ_IN_NODES && found[0].ROW == 3 && found[0].REASON == VQ_NOT_FINITE &&
            *vq_reason(found[0].REASON);
#endif
    status = 1;
    vq_velquor(&status, nodes, 4, elements, 1, props, 0, NULL, result, nodeout, elemout);
    return !(right && status == VQ_REFUSED);
}
