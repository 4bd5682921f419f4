// The colour-management instance record.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

struct CmLoader;  // the channel-table loader, alive from phase 2 to the end of the protocol

struct CmContext {
    MemBlock selfBlock;
    CmSettings1 settings1;
    CmSettings2 settings2;
    int32_t phase;            // resource protocol phase; 1 after CmNew
    CmLut* lut;
    MemBlock lutBlock;
    CmLoader* loader;
    int16_t selectC;          // index key derived by CmNew
    uint16_t tableMode;       // colour table byte 15
    int16_t pixelLayout[4];   // bytes per pixel, then positions of red, green, blue
    uint16_t adjustDominant[3];
    int16_t adjustMinimum[3];
    int16_t adjustHue[3];
    int16_t saturationOffset;
    uint32_t matchBlockNo;    // block number of the last index search's record
    uint32_t matchTableId;    // its table id
};
