/*
 * inkdot driver layer, C interface: load a resource pack and halftone a page
 * line by line with both engine protocols run for you.
 *
 * Library: libinkdot-driver (pkg-config inkdot-driver, CMake inkdot::driver).
 * It carries the built-in resource pack and links libinkdot, the engine of
 * inkdot.h, which itself stays the eight operations with no dependencies.
 * Only the functions below are exported; the C++ layer behind them
 * (include/inkdot/job.h in the source tree) is not installed.
 *
 *   char error[256];
 *   InkdotPack* pack = InkdotPackOpenDefault(error, sizeof error);
 *   InkdotJobSettings s;
 *   InkdotJobSettingsInit(&s);
 *   s.inputWidth = width;
 *   InkdotJob* job = InkdotJobOpen(pack, &s, error, sizeof error);
 *   InkdotPackClose(pack);              (a job keeps nothing of its pack)
 *   InkdotJobLayout layout;
 *   InkdotJobGetLayout(job, &layout);
 *   for each line: InkdotJobHalftoneLine(job, rgb, planes, error, sizeof error);
 *   InkdotJobClose(job);
 *
 * Failures return NULL or INKDOT_JOB_FAILED and put one line of text into
 * `error` (cut to errorSize bytes, always terminated; error may be NULL).
 * Handles are not shared between threads; separate jobs may run on separate
 * threads at once.
 *
 * What a job hands the engine, for programs that drive inkdot.h themselves
 * with the blocks of InkdotPackBlock:
 *   CmSettings1  brightness, contrast, saturation, offsetR/G/B as given;
 *                selectB = 10 + resolution (INKDOT_RES_*: 10 is 720x720);
 *                neutralSetting = 50; chunkDir = {1 (gamma, int32 in
 *                hundredths)} plus {512, "CW:" 0 C M Y K 0xFE 0xFF} when ink
 *                weights are given.
 *   CmSettings2  selectA = 1 (plain paper); inkScaleGate = 2 (no whole-table
 *                ink scaling); pixelFormat = 2; selectD = 0 colour, 1 mono.
 *   Protocol     CmSetResource from block 0 until INKDOT_NO_MORE_BLOCKS, then
 *                HalftoneNew with CmGetLut's record while the colour instance
 *                is still alive, and HalftoneSetResource starting at block
 *                INKDOT_REQUEST_LIST_BLOCK (1000); CmDelete only after that.
 *   HtSettings   method INKDOT_METHOD_DIFFUSION, _MATRIX or _THRESHOLD;
 *                ditherMode INKDOT_DITHER_PLAIN; inputFormat INKDOT_INPUT_GRAY
 *                or _RGB; colourMode INKDOT_MONO or INKDOT_COLOUR;
 *                resolutionX/Y in dpi; outputBits 1 or 2; scaleMode
 *                INKDOT_SCALE_*; width = printed pixels per line.
 *   Halftone     colour pixels go to the engine in B, G, R byte order; each
 *                line's input needs 16 readable bytes after its last pixel.
 *                InkdotJobHalftoneLine takes R, G, B and does both for you.
 */
#ifndef INKDOT_INKDOT_JOB_H
#define INKDOT_INKDOT_JOB_H

#include <stddef.h>
#include <stdint.h>

#include "inkdot/inkdot.h"

#ifdef __cplusplus
extern "C" {
#endif

#define INKDOT_JOB_OK 0
#define INKDOT_JOB_FAILED (-1)

/* The halftone protocol's first block in every inkdot pack. */
#define INKDOT_REQUEST_LIST_BLOCK 1000u

/* InkdotJobSettings.method */
#define INKDOT_JOB_ED 0        /* error diffusion (one or two bits) */
#define INKDOT_JOB_DITHER 1    /* ordered matrix dither (one or two bits) */
#define INKDOT_JOB_THRESHOLD 2 /* fixed threshold (one bit only) */

/* InkdotJobSettings.resolution, horizontal x vertical dpi. Two-bit output is
 * not offered at 720x360. */
#define INKDOT_RES_720X720 0
#define INKDOT_RES_1440X720 1
#define INKDOT_RES_360X720 2
#define INKDOT_RES_720X360 3

/* InkdotJobSettings.hscale: printed pixels per input pixel. */
#define INKDOT_HSCALE_HALF 0 /* one printed pixel from two input pixels */
#define INKDOT_HSCALE_1 1
#define INKDOT_HSCALE_2 2
#define INKDOT_HSCALE_3 3
#define INKDOT_HSCALE_4 4
#define INKDOT_HSCALE_5 5

typedef struct InkdotPack InkdotPack;
typedef struct InkdotJob InkdotJob;

typedef struct InkdotJobSettings {
    int method;           /* INKDOT_JOB_ED, _DITHER or _THRESHOLD; default ED */
    int outputBits;       /* 1 (dot or none) or 2 (none, small, medium, large); default 1 */
    int resolution;       /* INKDOT_RES_*; default 720x720 */
    int hscale;           /* INKDOT_HSCALE_*; default 1 */
    int mono;             /* 0: RGB input, C M Y K planes; 1: gray input, one K plane */
    int brightness;       /* -50..50, default 0 */
    int contrast;         /* -50..50, default 0 */
    int saturation;       /* -50..50, default 0 */
    int gamma;            /* hundredths, 100..300, default 150 */
    int offsetR, offsetG, offsetB; /* -50..50, default 0: added to each tone curve */
    int useInkWeights;    /* nonzero: inkWeights apply */
    uint8_t inkWeights[4];/* C, M, Y, K, 30..70 each; 50 = the pack's own amount */
    uint32_t inputWidth;  /* pixels per input line, at least 1 */
} InkdotJobSettings;

/* What one InkdotJobHalftoneLine call reads and writes. */
typedef struct InkdotJobLayout {
    uint32_t inputWidth;       /* pixels per input line */
    uint32_t inputBytesPerPixel; /* 3 (R, G, B) or 1 (gray) */
    uint32_t outputWidth;      /* printed pixels per line */
    uint32_t outputBits;       /* 1 or 2 */
    uint32_t planeCount;       /* 4 (C, M, Y, K) or 1 (K) */
    size_t planeStride;        /* bytes of one plane's line */
    uint32_t modelId;          /* the colour table the pack chose */
} InkdotJobLayout;

/* The pack compiled into the library. */
INKDOT_API InkdotPack* InkdotPackOpenDefault(char* error, size_t errorSize);
/* A pack file written by `inkdot pack`. */
INKDOT_API InkdotPack* InkdotPackOpenFile(const char* path, char* error, size_t errorSize);
/* A block of the pack, for driving inkdot.h directly: hand it over with
 * CmSetResourceSized / HalftoneSetResourceSized and its size (an index text
 * in a pack has no terminator). The bytes stay valid until InkdotPackClose.
 * NULL (size 0) when the pack has no such block. */
INKDOT_API const uint8_t* InkdotPackBlock(const InkdotPack* pack, uint32_t number, size_t* size);
INKDOT_API void InkdotPackClose(InkdotPack* pack);

/* The defaults listed in InkdotJobSettings; inputWidth 0 (to be set). */
INKDOT_API void InkdotJobSettingsInit(InkdotJobSettings* settings);
/* Runs both resource protocols; the pack may be closed afterwards. */
INKDOT_API InkdotJob* InkdotJobOpen(const InkdotPack* pack, const InkdotJobSettings* settings, char* error,
                                    size_t errorSize);
INKDOT_API void InkdotJobGetLayout(const InkdotJob* job, InkdotJobLayout* layout);
/* Halftones the next line, top to bottom: `input` holds inputWidth pixels of
 * inputBytesPerPixel bytes (255 = white); `planes` receives planeCount planes
 * of planeStride bytes, plane k at k * planeStride, pixels packed most
 * significant bit first (two bits: 0 none … 3 large dot). */
INKDOT_API int InkdotJobHalftoneLine(InkdotJob* job, const uint8_t* input, uint8_t* planes, char* error,
                                     size_t errorSize);
INKDOT_API void InkdotJobClose(InkdotJob* job);

/* The engine's words for a result code, e.g. "resource data missing, out of
 * order or invalid (code 0x300)", cut to bufferSize; returns buffer. */
INKDOT_API const char* InkdotResultMessage(uint32_t code, char* buffer, size_t bufferSize);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INKDOT_INKDOT_JOB_H */
