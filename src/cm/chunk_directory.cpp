#include "cm/chunk_directory.h"

namespace inkdot {

const void* lookupChunk(const ChunkDirectory* dir, uint32_t id) {
    if (dir == nullptr || dir->count <= 0) return nullptr;
    for (int32_t i = 0; i < dir->count; ++i) {
        if (dir->entries[i].id == id) return dir->entries[i].value;
    }
    return nullptr;
}

}  // namespace inkdot
