/*
 * inkdot: colour management and halftoning for inkjet printer drivers.
 *
 * The C interface: eight operations in two families.
 *
 *   Colour management:  CmNew, CmSetResource, CmGetLut, CmDelete
 *   Halftoning:         HalftoneNew, HalftoneSetResource, Halftone, HalftoneDelete
 *
 * Every operation but CmGetLut answers a 32-bit result code (RC_OK on
 * success). Resource data reaches an instance only through the two
 * ...SetResource calls, in the order the instance asks for: each call stores
 * the number of the block it wants next, 0xFFFFFFFF (-1) when it is done.
 * The ...SetResourceSized variants take the block's length as well and
 * refuse blocks too short for their format instead of reading past them.
 */
#ifndef INKDOT_INKDOT_H
#define INKDOT_INKDOT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#  define INKDOT_CALL __stdcall
#  if defined(INKDOT_BUILDING_DLL)
#    define INKDOT_API __declspec(dllexport)
#  else
#    define INKDOT_API
#  endif
#else
#  define INKDOT_CALL
#  define INKDOT_API __attribute__((visibility("default")))
#endif

/* Result codes. The high part names the class: 0x100 + n memory service,
 * 0x200 + n invalid argument n (0x200 alone: unsupported combination of
 * settings), 0x300 resource data missing, out of order or invalid. */
#define RC_OK         0x000u
#define RC_MEM_ALLOC  0x101u
#define RC_MEM_LOCK   0x102u
#define RC_MEM_UNLOCK 0x103u
#define RC_MEM_FREE   0x104u
#define RC_ARG        0x200u
#define RC_DATA       0x300u

/* Block numbers answered by the resource protocols. */
#define INKDOT_NO_MORE_BLOCKS 0xFFFFFFFFu

/* A block of the memory service: locked for its whole life, so the pointer
 * is both its identity and its data address. */
typedef void* MemBlock;

/* Chunk directory handed over through CmSettings1.chunkDir: a signed count,
 * then that many {id, value} pairs. Ids: 1 gamma (int32*), 256 ready-made tone
 * curves (768 bytes), 257 a curve record, 512 the channel-weight record. */
typedef struct ChunkEntry {
    uint32_t id;
    const void* value;
} ChunkEntry;

typedef struct ChunkDirectory {
    int32_t count;
    ChunkEntry entries[];
} ChunkDirectory;

/* First colour settings array: fifteen words. */
typedef struct CmSettings1 {
    uint32_t curveSource;    /* 0: build tone curves from the words below */
    int32_t brightness;      /* -50..50 */
    int32_t contrast;        /* -50..50 */
    int32_t saturation;      /* -50..50 */
    int32_t offsetR;         /* -50..50 */
    int32_t offsetG;         /* -50..50 */
    int32_t offsetB;         /* -50..50 */
    uint32_t selectF;        /* index key: eighth field of an index record */
    uint32_t selectB;        /* index key: number of the record's second name */
    uint32_t processMode;
    uint32_t processLevel;
    uint32_t neutralSetting; /* compared with 50 */
    uint32_t spare12;
    uint32_t spare13;
    const ChunkDirectory* chunkDir; /* or NULL */
} CmSettings1;

/* Second colour settings array: eleven words. */
typedef struct CmSettings2 {
    uint32_t selectA;      /* index key: position of the record's first name; 0 means 3 */
    int32_t inkScaleGate;  /* below 2 allows whole-table ink scaling */
    uint32_t pixelFormat;
    uint32_t blackScaling;
    uint32_t selectD;      /* index key: fifth field */
    uint32_t selectE;      /* index key: sixth field */
    uint32_t selectG;      /* index key: ninth field */
    uint32_t spare7;
    uint32_t spare8;
    uint32_t spare9;
    uint32_t spare10;
} CmSettings2;

/* The colour look-up record: the interface between the two families.
 * On a 32-bit build it is exactly 142 words; pointers are native here. */
typedef struct CmLut {
    uint32_t reserved0;
    uint32_t blackMode;    /* 0, 1 or 3 */
    uint32_t channels;     /* ink channels = bytes per grid node */
    uint32_t neutralMode;  /* 0 or 1 */
    int32_t auxParam[4];
    int32_t inkParam[5];   /* [0], [1]: ink-scaling percentages */
    uint32_t gridCount[3];
    uint8_t grid[3][68];   /* input level of each grid point, per axis */
    uint8_t grayTable[256];/* black amount for gray input (v, v, v) */
    uint8_t* lutData;      /* channels bytes per node, axis 2 fastest */
    MemBlock lutDataBlock;
    uint32_t tableBlockNo;
    uint32_t modelId;
    uint32_t reservedA[2];
    uint8_t* extraData;    /* optional data area of the colour table, or NULL */
    MemBlock extraDataBlock;
    uint32_t reservedB[2];
    MemBlock selfBlock;
} CmLut;

/* Halftone setting codes, for the words of HtSettings. */

/* method: how dots are placed. Every method but 0 and 3 diffuses error; 2 is
 * accepted and diffuses exactly like 1 (it shares the 1440x720 spread row);
 * 4 and up diffuse too, with the spread rows of no particular method. */
#define INKDOT_METHOD_THRESHOLD      0u /* fixed threshold */
#define INKDOT_METHOD_DIFFUSION      1u /* error diffusion */
#define INKDOT_METHOD_DIFFUSION_ALT  2u /* error diffusion, as 1 */
#define INKDOT_METHOD_MATRIX         3u /* threshold-matrix (ordered) dither */

/* ditherMode, read by the one-bit colour matrix dither: 0 and 2 diffuse
 * plane 1 instead of dithering it (the hybrid dither); any other value
 * dithers all four planes. */
#define INKDOT_DITHER_HYBRID         0u
#define INKDOT_DITHER_PLAIN          1u
#define INKDOT_DITHER_HYBRID_ALT     2u

/* inputFormat: the layout of input pixels. 0 is one gray byte a pixel. Every
 * colour kernel reads three bytes a pixel (b0, b1, b2) for every format but
 * ink input, so 2 and 3 mean the same: give format 3 pixels three bytes apart,
 * like 2. Ink input is four bytes a pixel, the levels of planes 0 to 3.
 * Horizontal replication (scaleMode 2 and up) alone copies four-byte pixels
 * for format 3, which the kernels then read three bytes apart: use 2 there.
 * Formats 1 and 7, and formats of six-byte pixels, are refused. */
#define INKDOT_INPUT_GRAY            0u
#define INKDOT_INPUT_RGB             2u
#define INKDOT_INPUT_RGB_ALT         3u
#define INKDOT_INPUT_INK             4u

/* colourMode: 0 one gray plane; any other value four ink planes from colour
 * input. 2 computes all four but writes only planes 0 to 2 (one-bit colour
 * diffusion with cached tables); 3 gives the dot value table a block of
 * double size. */
#define INKDOT_MONO                  0u
#define INKDOT_COLOUR                1u
#define INKDOT_COLOUR_THREE_PLANES   2u
#define INKDOT_COLOUR_DOUBLE_DOT_TABLE 3u

/* outputBits: 2 packs a dot code (0 none, 1 small, 2 medium, 3 large) in two
 * bits a pixel; 1 packs one bit a pixel. Other values are refused. */
#define INKDOT_ONE_BIT               1u
#define INKDOT_TWO_BITS              2u

/* scaleMode: horizontal scaling of the input. Values from 2 up repeat every
 * input pixel scaleMode + 1 times. */
#define INKDOT_SCALE_HALVE           (-1) /* two input pixels make one (kernels that offer it) */
#define INKDOT_SCALE_NONE            0
#define INKDOT_SCALE_DOUBLE          1    /* every input pixel serves two output pixels */
#define INKDOT_SCALE_REPEAT_MIN      2

/* Halftone settings: eleven words. */
typedef struct HtSettings {
    uint32_t method;       /* INKDOT_METHOD_* */
    uint32_t ditherMode;   /* INKDOT_DITHER_* */
    uint32_t inputFormat;  /* INKDOT_INPUT_* */
    uint32_t colourMode;   /* INKDOT_MONO, INKDOT_COLOUR* */
    uint32_t resolutionX;
    uint32_t resolutionY;
    uint32_t outputBits;   /* INKDOT_ONE_BIT, INKDOT_TWO_BITS */
    int32_t scaleMode;     /* INKDOT_SCALE_*, or n >= 2: repeat by n + 1 */
    uint32_t spare8;
    uint32_t width;        /* pixels per raster line */
    uint32_t spare10;
} HtSettings;

typedef struct CmContext CmContext;
typedef struct HtContext HtContext;

INKDOT_API uint32_t INKDOT_CALL CmNew(const CmSettings1* settings1, const CmSettings2* settings2,
                                      uint32_t ignored3, uint32_t* outFirstBlock,
                                      CmContext** outHandle);
INKDOT_API uint32_t INKDOT_CALL CmSetResource(CmContext* ctx, const uint8_t* block,
                                              uint32_t* outNextBlock);
/* CmSetResource with the block's length in bytes. A block shorter than its
 * format needs is refused with RC_DATA and nothing outside it is read. An
 * index text ends at its first NUL or SUB or at the end of the block,
 * whichever comes first, so a sized index text needs no terminator. Valid
 * blocks give exactly the results of CmSetResource; a null block is refused
 * as CmSetResource refuses it, whatever the size. */
INKDOT_API uint32_t INKDOT_CALL CmSetResourceSized(CmContext* ctx, const uint8_t* block, uint32_t size,
                                                   uint32_t* outNextBlock);
INKDOT_API CmLut* INKDOT_CALL CmGetLut(CmContext* ctx);
INKDOT_API uint32_t INKDOT_CALL CmDelete(CmContext* ctx);

INKDOT_API uint32_t INKDOT_CALL HalftoneNew(const HtSettings* settings, const CmLut* lut,
                                            uint32_t reserved3, uint32_t* outModelId,
                                            HtContext** outHandle);
INKDOT_API uint32_t INKDOT_CALL HalftoneSetResource(HtContext* ctx, const uint8_t* block,
                                                    uint32_t* outNextBlock);
/* HalftoneSetResource with the block's length in bytes; a block shorter than
 * its format needs is refused with RC_DATA and nothing outside it is read.
 * Valid blocks give exactly the results of HalftoneSetResource; a null block
 * is refused as HalftoneSetResource refuses it, whatever the size. */
INKDOT_API uint32_t INKDOT_CALL HalftoneSetResourceSized(HtContext* ctx, const uint8_t* block,
                                                         uint32_t size, uint32_t* outNextBlock);
/* Halftone checks a run before any pixel is read, in this order: RC_ARG + 6
 * when it does not end within the line (count > width or startX > width -
 * count), RC_ARG + 10 when reserved10 is not 0, RC_ARG + 5 when bitOffset
 * does not fall in the first output byte (8 pixels a byte at one bit, 4 at
 * two), RC_DATA when the instance was not fed every resource. reserved8 is
 * ignored. The monochrome kernels then refuse option11 != 0 (RC_ARG + 11). */
INKDOT_API uint32_t INKDOT_CALL Halftone(HtContext* ctx, const uint8_t* src, uint8_t* dst,
                                         uint32_t planeStride, uint32_t bitOffset, uint32_t count,
                                         uint32_t startX, uint32_t reserved8, uint32_t lineNo,
                                         uint32_t reserved10, uint32_t option11);
INKDOT_API uint32_t INKDOT_CALL HalftoneDelete(HtContext* ctx);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INKDOT_INKDOT_H */
