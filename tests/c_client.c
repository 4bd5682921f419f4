/* The C interface from plain C: the header compiles as C and every family's
 * calls bind to the library's plain names (also through the Windows import
 * library, under Wine). No resources are handed over, so the record is still
 * empty; examples/lut_summary.c runs the protocols with the built-in pack. */
#include <inkdot/inkdot.h>

int main(void) {
    CmSettings1 s1 = {0};
    CmSettings2 s2 = {0};
    HtSettings hs = {0};
    uint32_t next = 0, model = 0, rc = 1;
    CmContext* cm = NULL;
    HtContext* ht = NULL;
    hs.method = 1;
    hs.outputBits = 1;
    hs.width = 1000;
    if (CmNew(&s1, &s2, 0, &next, &cm) == RC_OK) rc = HalftoneNew(&hs, CmGetLut(cm), 0, &model, &ht);
    if (ht != NULL) HalftoneDelete(ht);
    if (cm != NULL) CmDelete(cm);
    return rc == RC_OK ? 0 : 1;
}
