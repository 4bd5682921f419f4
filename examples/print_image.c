/* Prints an image from C through the driver layer (inkdot/inkdot_job.h):
 * the built-in pack, one-bit colour error diffusion at 720 x 720 dpi, and
 * one PBM file per ink.
 *
 *   print_image OUTPREFIX [IMAGE.ppm|IMAGE.pgm]
 *
 * A binary PPM (P6) prints in colour into OUTPREFIX-cyan.pbm, -magenta,
 * -yellow and -black; a PGM (P5) prints in black only. Without an image it
 * prints a made-up 720 x 360 pixel picture: the hues across, white to full
 * colour to black from top to bottom. It ends by telling each plane's ink
 * coverage. Build: cc print_image.c $(pkg-config --cflags --libs inkdot-driver) */
#include <inkdot/inkdot_job.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define MAX_SIDE 30000 /* bigger than any page this example means to print */

typedef struct Image {
    FILE* file; /* NULL: the made-up picture */
    unsigned width, height, channels;
} Image;

/* A decimal header field of a PNM file, after blanks and # comments. */
static int pnmNumber(FILE* f, unsigned* out) {
    int c = fgetc(f);
    unsigned long v = 0;
    while (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '#') {
        if (c == '#')
            while (c != EOF && c != '\n') c = fgetc(f);
        c = fgetc(f);
    }
    if (c < '0' || c > '9') return 0;
    for (; c >= '0' && c <= '9'; c = fgetc(f))
        if ((v = v * 10 + (unsigned)(c - '0')) > MAX_SIDE) return 0;
    *out = (unsigned)v; /* the one blank after the field is consumed */
    return 1;
}

static int openImage(const char* path, Image* image) {
    unsigned maxValue = 0;
    int kind;
    image->file = fopen(path, "rb");
    if (image->file == NULL) {
        perror(path);
        return 0;
    }
    kind = fgetc(image->file) == 'P' ? fgetc(image->file) : 0;
    if ((kind != '5' && kind != '6') || !pnmNumber(image->file, &image->width) ||
        !pnmNumber(image->file, &image->height) || !pnmNumber(image->file, &maxValue) || image->width == 0 ||
        image->height == 0 || maxValue != 255) {
        fprintf(stderr, "%s: not a binary PGM or PPM with 8-bit samples\n", path);
        return 0;
    }
    image->channels = kind == '6' ? 3 : 1;
    return 1;
}

/* The next line of the image as the job reads it (R, G, B or gray). */
static int readLine(Image* image, unsigned y, uint8_t* line) {
    unsigned x;
    if (image->file != NULL) return fread(line, image->channels, image->width, image->file) == image->width;
    for (x = 0; x < image->width; ++x) {
        /* Hue from red through green and blue back to red across the line;
         * the top half fades in from white, the bottom half darkens to black. */
        const unsigned sector = x * 6 / image->width, ramp = (x * 6 % image->width) * 255 / image->width;
        const unsigned rgb[6][3] = {{255, ramp, 0}, {255 - ramp, 255, 0}, {0, 255, ramp},
                                    {0, 255 - ramp, 255}, {ramp, 0, 255}, {255, 0, 255 - ramp}};
        const unsigned half = image->height / 2;
        unsigned c;
        for (c = 0; c < 3; ++c) {
            const unsigned v = rgb[sector][c];
            line[x * 3 + c] = (uint8_t)(y < half ? 255 - (255 - v) * y / half : v * (image->height - y) / half);
        }
    }
    return 1;
}

int main(int argc, char** argv) {
    static const char* const kInkNames[4] = {"cyan", "magenta", "yellow", "black"};
    Image image = {NULL, 720, 360, 3};
    char error[256];
    FILE* out[4] = {NULL, NULL, NULL, NULL};
    char paths[4][4096];
    unsigned long long dots[4] = {0, 0, 0, 0};
    InkdotJobSettings settings;
    InkdotJobLayout layout;
    InkdotPack* pack;
    InkdotJob* job;
    uint8_t *line, *planes, b;
    unsigned y, p;
    size_t i;
    int status = 1;

    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: print_image OUTPREFIX [IMAGE.ppm|IMAGE.pgm]\n");
        return 2;
    }
    if (argc == 3 && !openImage(argv[2], &image)) return 1;

    pack = InkdotPackOpenDefault(error, sizeof error);
    if (pack == NULL) {
        fprintf(stderr, "print_image: %s\n", error);
        return 1;
    }
    InkdotJobSettingsInit(&settings);
    settings.mono = image.channels == 1;
    settings.inputWidth = image.width;
    job = InkdotJobOpen(pack, &settings, error, sizeof error);
    InkdotPackClose(pack); /* the job keeps what it needs */
    if (job == NULL) {
        fprintf(stderr, "print_image: %s\n", error);
        return 1;
    }
    InkdotJobGetLayout(job, &layout);
    memset(paths, 0, sizeof paths);

    line = malloc((size_t)image.width * image.channels);
    planes = malloc(layout.planeCount * layout.planeStride);
    for (p = 0; p < layout.planeCount && line != NULL && planes != NULL; ++p) {
        const char* ink = layout.planeCount == 1 ? "black" : kInkNames[p];
        snprintf(paths[p], sizeof paths[p], "%s-%s.pbm", argv[1], ink);
        out[p] = fopen(paths[p], "wb");
        if (out[p] == NULL) {
            perror(paths[p]);
            paths[p][0] = '\0'; /* not ours to remove */
            goto done;
        }
        fprintf(out[p], "P4\n%u %u\n", (unsigned)layout.outputWidth, image.height);
    }
    if (line == NULL || planes == NULL) {
        fprintf(stderr, "print_image: out of memory\n");
        goto done;
    }
    for (y = 0; y < image.height; ++y) {
        if (!readLine(&image, y, line)) {
            fprintf(stderr, "print_image: the image ends at line %u\n", y);
            goto done;
        }
        if (InkdotJobHalftoneLine(job, line, planes, error, sizeof error) != INKDOT_JOB_OK) {
            fprintf(stderr, "print_image: %s\n", error);
            goto done;
        }
        /* A set bit is a dot: PBM's black. */
        for (p = 0; p < layout.planeCount; ++p) {
            const uint8_t* plane = planes + p * layout.planeStride;
            for (i = 0; i < layout.planeStride; ++i)
                for (b = plane[i]; b != 0; b &= (uint8_t)(b - 1)) ++dots[p];
            if (fwrite(plane, 1, layout.planeStride, out[p]) != layout.planeStride) {
                fprintf(stderr, "print_image: cannot write the %s plane\n", kInkNames[p]);
                goto done;
            }
        }
    }
    for (p = 0; p < layout.planeCount; ++p) {
        if (fclose(out[p]) != 0) {
            fprintf(stderr, "print_image: cannot write %s\n", paths[p]);
            out[p] = NULL;
            goto done;
        }
        out[p] = NULL;
    }
    status = 0;
    printf("printed %u x %u dots at 720 x 720 dpi, colour table %u\n", (unsigned)layout.outputWidth, image.height,
           (unsigned)layout.modelId);
    for (p = 0; p < layout.planeCount; ++p)
        printf("  %s-%s.pbm: %.1f%% ink\n", argv[1], layout.planeCount == 1 ? "black" : kInkNames[p],
               100.0 * (double)dots[p] / ((double)layout.outputWidth * image.height));
done:
    /* A failed run leaves no half-written planes behind. */
    for (p = 0; status != 0 && p < layout.planeCount; ++p) {
        if (out[p] != NULL) fclose(out[p]);
        if (paths[p][0] != '\0') remove(paths[p]);
    }
    if (image.file != NULL) fclose(image.file);
    free(line);
    free(planes);
    InkdotJobClose(job);
    return status;
}
