// inkdot.dll as a driver sees it: loaded with LoadLibrary, each operation
// looked up with GetProcAddress under its plain name and under its decorated
// alias, and called with the callee-pops convention. Only a 32-bit Windows
// build has the DLL (the test program finds it in its own directory). The
// names themselves, and that nothing else is exported, are checked on the
// export table by scripts/check-dll-exports.sh; here the entries are called.
#if defined(_WIN32) && defined(__i386__)

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "inkdot/inkdot.h"

namespace {

// Pushes the argument words right to left, calls entry, and answers its
// result and the bytes of arguments left on the stack (0 when the callee
// removed exactly its own). The stack pointer is put back either way, so a
// wrong convention fails the test, not the process.
std::pair<uint32_t, int32_t> call(FARPROC entry, std::initializer_list<uint32_t> words) {
    const std::vector<uint32_t> args(words);
    uint32_t result, delta, scratchEntry;
    const uint32_t* scratchArgs;
    asm volatile(
        "movl %%esp, %%edi\n\t"
        "1:\n\t"
        "pushl -4(%%esi,%%ecx,4)\n\t"
        "decl %%ecx\n\t"
        "jnz 1b\n\t"
        "call *%%edx\n\t"
        "movl %%esp, %%ecx\n\t"
        "subl %%edi, %%ecx\n\t"
        "movl %%edi, %%esp\n\t"
        : "=a"(result), "=c"(delta), "=d"(scratchEntry), "=S"(scratchArgs)
        : "1"(static_cast<uint32_t>(args.size())), "2"(reinterpret_cast<uint32_t>(entry)), "3"(args.data())
        : "edi", "memory", "cc");
    return {result, -static_cast<int32_t>(delta)};
}

template <typename T>
uint32_t word(T* pointer) {
    return reinterpret_cast<uint32_t>(pointer);
}

// One driver session through the plain names or the aliases ("_A_" name "@"
// argument bytes), resources through the sized calls or not: colour instance,
// an index that ends at once, the record, a gray halftone instance (refused
// once, then created), its empty request list, a run before it is fed, and
// both deletions. Answers every result and output word.
std::vector<uint32_t> session(HMODULE dll, bool alias, bool sized) {
    std::vector<uint32_t> out;
    const auto run = [&](const char* name, int words, std::initializer_list<uint32_t> args) {
        const std::string symbol = alias ? "_A_" + std::string(name) + "@" + std::to_string(4 * words) : name;
        const FARPROC entry = GetProcAddress(dll, symbol.c_str());
        EXPECT_NE(entry, nullptr) << symbol;
        if (entry == nullptr) return uint32_t{0xFFFFFFFF};
        const auto [result, left] = call(entry, args);
        EXPECT_EQ(left, 0) << symbol << " leaves arguments on the stack";
        return result;
    };
    CmSettings1 s1{};
    CmSettings2 s2{};
    uint32_t next = 0xAAAAAAAAu, model = 0xAAAAAAAAu;
    CmContext* cm = nullptr;
    out.push_back(run("CmNew", 5, {word(&s1), word(&s2), 0, word(&next), word(&cm)}));
    out.push_back(next);
    if (cm == nullptr) return out;
    const uint8_t emptyIndex[16] = {};
    out.push_back(sized ? run("CmSetResourceSized", 4, {word(cm), word(emptyIndex), sizeof emptyIndex, word(&next)})
                        : run("CmSetResource", 3, {word(cm), word(emptyIndex), word(&next)}));
    out.push_back(next);
    const uint32_t lut = run("CmGetLut", 1, {word(cm)});
    out.push_back(lut != 0);  // the address itself differs between sessions
    HtSettings hs{};
    hs.method = 1;
    hs.outputBits = 1;
    hs.resolutionX = hs.resolutionY = 720;
    hs.width = 16;
    HtContext* ht = nullptr;
    out.push_back(run("HalftoneNew", 5, {word(&hs), lut, 1, word(&model), word(&ht)}));
    out.push_back(run("HalftoneNew", 5, {word(&hs), lut, 0, word(&model), word(&ht)}));
    out.push_back(model);
    if (ht != nullptr) {
        const uint8_t requestList[2] = {0xFF, 0xFF};  // no ids: the terminator alone
        out.push_back(sized ? run("HalftoneSetResourceSized", 4, {word(ht), word(requestList), 2, word(&next)})
                            : run("HalftoneSetResource", 3, {word(ht), word(requestList), word(&next)}));
        out.push_back(next);
        const uint8_t src[4] = {0, 64, 128, 255};
        uint8_t dst[4] = {};
        out.push_back(run("Halftone", 11, {word(ht), word(src), word(dst), 1, 0, 4, 0, 0, 0, 0, 0}));
        out.push_back(run("HalftoneDelete", 1, {word(ht)}));
    }
    out.push_back(run("CmDelete", 1, {word(cm)}));
    return out;
}

TEST(InkdotDll, ExportsRemoveTheirOwnArgumentsAndAliasesBehaveAlike) {
    const HMODULE dll = LoadLibraryA("inkdot.dll");
    ASSERT_NE(dll, nullptr) << "inkdot.dll not found beside the test program";
    const std::vector<uint32_t> plain = session(dll, false, false);
    ASSERT_EQ(plain.size(), 13u);
    // CmNew, the index is the first block wanted, CmGetLut gave a record,
    // HalftoneNew with reserved3 set, HalftoneNew, Halftone before the
    // instance is fed, HalftoneDelete, CmDelete.
    const std::pair<size_t, uint32_t> expected[] = {{0, RC_OK}, {1, 0},        {4, 1},      {5, RC_ARG + 3},
                                                    {6, RC_OK}, {10, RC_DATA}, {11, RC_OK}, {12, RC_OK}};
    for (const auto& [at, value] : expected) EXPECT_EQ(plain[at], value) << "word " << at;
    for (bool alias : {false, true})
        for (bool sized : {false, true}) EXPECT_EQ(session(dll, alias, sized), plain) << alias << " " << sized;
    FreeLibrary(dll);
}

}  // namespace

#endif  // _WIN32 && __i386__
