#include <cstdio>

#include "inkdot/job.h"

namespace inkdot {

std::string resultMessage(uint32_t code) {
    std::string text;
    switch (code) {
        case RC_OK: text = "success"; break;
        case RC_MEM_ALLOC: text = "the engine could not obtain memory"; break;
        case RC_MEM_LOCK: text = "the engine could not lock memory"; break;
        case RC_MEM_UNLOCK: text = "the engine could not unlock memory"; break;
        case RC_MEM_FREE: text = "the engine could not free memory"; break;
        case RC_ARG: text = "this combination of settings is not supported"; break;
        case RC_DATA: text = "resource data missing, out of order or invalid"; break;
        default:
            if (code > RC_ARG && code < RC_ARG + 0x100)
                text = "argument " + std::to_string(code - RC_ARG) + " was refused";
            else
                text = "unknown result";
    }
    char hex[24];
    std::snprintf(hex, sizeof hex, " (code 0x%03x)", static_cast<unsigned>(code));
    return text + hex;
}

}  // namespace inkdot
