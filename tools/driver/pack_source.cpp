// The two block sources the tools offer: the embedded pack and a pack file.
#include <memory>

#include "driver/pack_keys.h"
#include "inkdot/job.h"
#include "pack/pack.h"

namespace inkdot {
namespace {

class PackSource final : public BlockSource {
public:
    tools::Pack pack;

    std::span<const uint8_t> block(uint32_t number) const override {
        const tools::PackEntry* entry = pack.find(number);
        return entry ? entry->bytes : std::span<const uint8_t>{};
    }
    uint32_t requestListBlock() const override { return tools::keys::kRequestListBlock; }
};

}  // namespace

std::unique_ptr<BlockSource> openDefaultPack(std::string& error) {
    auto source = std::make_unique<PackSource>();
    if (!source->pack.open(tools::defaultPackBytes(), error)) {
        error = "the built-in pack is damaged: " + error;
        return nullptr;
    }
    return source;
}

std::unique_ptr<BlockSource> openPackFile(const std::string& path, std::string& error) {
    tools::Bytes bytes;
    if (!tools::readFile(path, bytes, error)) return nullptr;
    auto source = std::make_unique<PackSource>();
    if (!source->pack.open(std::move(bytes), error)) {
        error = path + ": " + error;
        return nullptr;
    }
    return source;
}

}  // namespace inkdot
