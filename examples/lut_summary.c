/* Drives the engine's eight operations by hand from C, with the blocks of
 * the built-in pack (InkdotPackBlock of inkdot/inkdot_job.h) and the settings
 * the driver layer uses, and prints what the colour look-up record holds.
 *
 *   lut_summary [--mono]
 *
 * The settings are those listed in inkdot_job.h for 720 x 720 dpi; the
 * protocols run as the engine asks, block by block. Build: cc lut_summary.c
 * $(pkg-config --cflags --libs inkdot-driver), or link inkdot::driver and
 * inkdot::inkdot in CMake. */
#include <inkdot/inkdot.h>
#include <inkdot/inkdot_job.h>
#include <stdio.h>
#include <string.h>

#define MAX_CALLS 8 /* a protocol that asks for more blocks is broken */

/* Hands the pack's blocks to one protocol, from block `next` until the
 * engine wants no more. Returns the first failing result code. */
static uint32_t feed(const InkdotPack* pack, uint32_t next, void* instance, int colour) {
    int call;
    for (call = 0; call < MAX_CALLS && next != INKDOT_NO_MORE_BLOCKS; ++call) {
        size_t size = 0;
        const uint8_t* block = InkdotPackBlock(pack, next, &size);
        const uint32_t asked = next;
        uint32_t rc;
        if (block == NULL || size > UINT32_MAX) {
            fprintf(stderr, "the pack has no block %u\n", (unsigned)asked);
            return RC_DATA;
        }
        rc = colour ? CmSetResourceSized((CmContext*)instance, block, (uint32_t)size, &next)
                    : HalftoneSetResourceSized((HtContext*)instance, block, (uint32_t)size, &next);
        printf("  block %4u: %5zu bytes\n", (unsigned)asked, size);
        if (rc != RC_OK) return rc;
    }
    return next == INKDOT_NO_MORE_BLOCKS ? RC_OK : RC_DATA;
}

int main(int argc, char** argv) {
    const int mono = argc == 2 && strcmp(argv[1], "--mono") == 0;
    char text[128];
    int32_t gamma = 150; /* hundredths: 1.5 */
    struct {
        int32_t count;
        ChunkEntry entries[1];
    } chunks = {1, {{1, &gamma}}}; /* chunk 1: gamma */
    CmSettings1 s1;
    CmSettings2 s2;
    HtSettings hs;
    CmContext* cm = NULL;
    HtContext* ht = NULL;
    uint32_t next = 0, model = 0, rc;
    const CmLut* lut;
    InkdotPack* pack;

    if (argc > 2 || (argc == 2 && !mono)) {
        fprintf(stderr, "usage: lut_summary [--mono]\n");
        return 2;
    }
    pack = InkdotPackOpenDefault(text, sizeof text);
    if (pack == NULL) {
        fprintf(stderr, "lut_summary: %s\n", text);
        return 1;
    }

    memset(&s1, 0, sizeof s1);
    memset(&s2, 0, sizeof s2);
    s1.selectB = 10 + INKDOT_RES_720X720; /* resolution key */
    s1.neutralSetting = 50;               /* the table's own neutral axis */
    s1.chunkDir = (const ChunkDirectory*)&chunks;
    s2.selectA = 1;                       /* plain paper */
    s2.inkScaleGate = 2;                  /* no whole-table ink scaling */
    s2.pixelFormat = 2;
    s2.selectD = mono ? 1 : 0;
    rc = CmNew(&s1, &s2, 0, &next, &cm);
    printf("colour management, %s:\n", mono ? "mono" : "colour");
    if (rc == RC_OK) rc = feed(pack, next, cm, 1);
    if (rc != RC_OK) goto done;
    lut = CmGetLut(cm);
    printf("CmLut: %u channels, grid %ux%ux%u, modelId %u, ink parameters %d %d\n", (unsigned)lut->channels,
           (unsigned)lut->gridCount[0], (unsigned)lut->gridCount[1], (unsigned)lut->gridCount[2],
           (unsigned)lut->modelId, (int)lut->inkParam[0], (int)lut->inkParam[1]);

    /* The halftone protocol reads through the CmLut's pointers: the colour
     * instance stays alive until it has finished. */
    memset(&hs, 0, sizeof hs);
    hs.method = 1; /* error diffusion */
    hs.ditherMode = 1;
    hs.inputFormat = mono ? 0 : 2;
    hs.colourMode = mono ? 0 : 1;
    hs.resolutionX = hs.resolutionY = 720;
    hs.outputBits = 1;
    hs.width = 1000;
    rc = HalftoneNew(&hs, lut, 0, &model, &ht);
    printf("halftoning:\n");
    if (rc == RC_OK) rc = feed(pack, INKDOT_REQUEST_LIST_BLOCK, ht, 0);
    if (rc == RC_OK) printf("HtContext ready: modelId %u, 1-bit error diffusion, 1000 pixels a line\n", (unsigned)model);
done:
    if (rc != RC_OK) fprintf(stderr, "lut_summary: %s\n", InkdotResultMessage(rc, text, sizeof text));
    if (ht != NULL) HalftoneDelete(ht);
    if (cm != NULL) CmDelete(cm);
    InkdotPackClose(pack);
    return rc == RC_OK ? 0 : 1;
}
