/* The C interface from plain C: the header compiles as C and every family's
 * calls bind to the library's plain names (also through the Windows import
 * library, under Wine). No resources are handed over, so the record is still
 * empty; examples/lut_summary.c runs the protocols with the built-in pack. */
#include <inkdot/inkdot.h>
#include <stdio.h>

int main(void) {
    CmSettings1 s1 = {0};
    CmSettings2 s2 = {0};
    uint32_t next = 0;
    CmContext* cm = NULL;
    uint32_t rc = CmNew(&s1, &s2, 0, &next, &cm);
    if (rc != RC_OK) {
        fprintf(stderr, "CmNew failed: 0x%03x\n", (unsigned)rc);
        return 1;
    }
    const CmLut* lut = CmGetLut(cm);
    printf("empty CmLut: %u channels, grid %ux%ux%u, modelId %u, first block wanted %u\n",
           (unsigned)lut->channels, (unsigned)lut->gridCount[0], (unsigned)lut->gridCount[1],
           (unsigned)lut->gridCount[2], (unsigned)lut->modelId, (unsigned)next);

    HtSettings hs = {0};
    hs.method = 1;
    hs.outputBits = 1;
    hs.width = 1000;
    HtContext* ht = NULL;
    uint32_t model = 0;
    rc = HalftoneNew(&hs, lut, 0, &model, &ht);
    printf("HalftoneNew: 0x%03x, modelId %u\n", (unsigned)rc, (unsigned)model);
    if (ht != NULL) HalftoneDelete(ht);
    CmDelete(cm);
    return rc == RC_OK ? 0 : 1;
}
