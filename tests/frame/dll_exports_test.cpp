// inkdot.dll as a driver sees it: loaded with LoadLibrary, each operation
// looked up with GetProcAddress under its plain name and under its decorated
// alias, and called with the callee-pops convention. Only a 32-bit Windows
// build has the DLL (the test program finds it in its own directory).
#if defined(_WIN32) && defined(__i386__)

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "inkdot/inkdot.h"

namespace {

// The names themselves, and that nothing else is exported, are checked on the
// export table by scripts/check-dll-exports.sh; here the entries are called.
struct Export {
    const char* plain;
    const char* alias;
};

const Export kExports[] = {
    {"CmNew", "_A_CmNew@20"},
    {"CmSetResource", "_A_CmSetResource@12"},
    {"CmGetLut", "_A_CmGetLut@4"},
    {"CmDelete", "_A_CmDelete@4"},
    {"HalftoneNew", "_A_HalftoneNew@20"},
    {"HalftoneSetResource", "_A_HalftoneSetResource@12"},
    {"Halftone", "_A_Halftone@44"},
    {"HalftoneDelete", "_A_HalftoneDelete@4"},
    {"CmSetResourceSized", "_A_CmSetResourceSized@16"},
    {"HalftoneSetResourceSized", "_A_HalftoneSetResourceSized@16"},
};
constexpr int kCmSetResourceSized = 8;
constexpr int kHalftoneSetResourceSized = 9;

// The result of one call and the bytes of arguments still on the stack after
// it: 0 when the callee removed exactly the arguments it was given.
struct CallOutcome {
    uint32_t result;
    int32_t leftOnStack;
};

// Pushes the argument words right to left, calls entry, and measures the
// stack pointer against its value before the pushes. The stack pointer is put
// back either way, so a wrong convention fails the test, not the process.
CallOutcome callCounted(FARPROC entry, std::initializer_list<uint32_t> words) {
    const std::vector<uint32_t> args(words);
    uint32_t result;
    uint32_t delta;
    uint32_t scratchEntry;
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
        : "1"(static_cast<uint32_t>(args.size())), "2"(reinterpret_cast<uint32_t>(entry)),
          "3"(args.data())
        : "edi", "memory", "cc");
    // The stack grows down: arguments left behind make the pointer lower.
    return {result, -static_cast<int32_t>(delta)};
}

template <typename T>
uint32_t word(T* pointer) {
    return reinterpret_cast<uint32_t>(pointer);
}

class InkdotDll : public ::testing::Test {
protected:
    void SetUp() override {
        dll_ = LoadLibraryA("inkdot.dll");
        ASSERT_NE(dll_, nullptr) << "inkdot.dll not found beside the test program";
    }
    void TearDown() override {
        if (dll_ != nullptr) FreeLibrary(dll_);
    }
    FARPROC entry(const char* name) const { return GetProcAddress(dll_, name); }

    HMODULE dll_ = nullptr;
};

// What one driver session answers, call by call, through one set of names.
struct Session {
    std::vector<uint32_t> results;
    std::vector<uint32_t> outputs;  // block numbers and model ids written back
    std::vector<int32_t> leftOnStack;
};

// A whole session through the names picked by nameOf: colour instance, its
// record, a gray halftone instance (refused once, then created), its request
// list, a run before the instance is fed, and both deletions. With sized set,
// resources go through the ...SetResourceSized calls.
Session runSession(HMODULE dll, const char* (*nameOf)(const Export&), bool sized = false) {
    auto fn = [&](int i) { return GetProcAddress(dll, nameOf(kExports[i])); };
    Session s;
    auto record = [&](CallOutcome outcome) {
        s.results.push_back(outcome.result);
        s.leftOnStack.push_back(outcome.leftOnStack);
        return outcome.result;
    };

    CmSettings1 settings1{};
    CmSettings2 settings2{};
    uint32_t firstBlock = 0xAAAAAAAAu;
    CmContext* cm = nullptr;
    record(callCounted(fn(0), {word(&settings1), word(&settings2), 0, word(&firstBlock), word(&cm)}));
    s.outputs.push_back(firstBlock);
    if (cm == nullptr) return s;

    // An index text that ends at once: no usable record.
    const uint8_t emptyIndex[16] = {};
    uint32_t next = 0xAAAAAAAAu;
    if (sized) {
        record(callCounted(fn(kCmSetResourceSized),
                           {word(cm), word(emptyIndex), sizeof emptyIndex, word(&next)}));
    } else {
        record(callCounted(fn(1), {word(cm), word(emptyIndex), word(&next)}));
    }
    s.outputs.push_back(next);
    const auto* lut = reinterpret_cast<const CmLut*>(record(callCounted(fn(2), {word(cm)})));
    s.results.back() = lut != nullptr;  // the address itself differs between sessions

    HtSettings settings{};
    settings.method = 1;  // error diffusion
    settings.outputBits = 1;
    settings.resolutionX = 720;
    settings.resolutionY = 720;
    settings.width = 16;
    uint32_t modelId = 0xAAAAAAAAu;
    HtContext* ht = nullptr;
    record(callCounted(fn(4), {word(&settings), word(lut), 1, word(&modelId), word(&ht)}));
    record(callCounted(fn(4), {word(&settings), word(lut), 0, word(&modelId), word(&ht)}));
    s.outputs.push_back(modelId);
    if (ht != nullptr) {
        const uint8_t requestList[2] = {0xFF, 0xFF};  // no ids: the terminator alone
        next = 0xAAAAAAAAu;
        if (sized) {
            record(callCounted(fn(kHalftoneSetResourceSized),
                               {word(ht), word(requestList), sizeof requestList, word(&next)}));
        } else {
            record(callCounted(fn(5), {word(ht), word(requestList), word(&next)}));
        }
        s.outputs.push_back(next);
        const uint8_t src[4] = {0, 64, 128, 255};
        uint8_t dst[4] = {};
        record(callCounted(fn(6), {word(ht), word(src), word(dst), 1, 0, 4, 0, 0, 0, 0, 0}));
        record(callCounted(fn(7), {word(ht)}));
    }
    record(callCounted(fn(3), {word(cm)}));
    return s;
}

TEST_F(InkdotDll, ExportsRemoveTheirOwnArgumentsAndAliasesBehaveAlike) {
    const Session plain = runSession(dll_, [](const Export& e) { return e.plain; });
    const Session alias = runSession(dll_, [](const Export& e) { return e.alias; });

    ASSERT_EQ(plain.results.size(), 9u);
    for (int32_t left : plain.leftOnStack) EXPECT_EQ(left, 0);
    for (int32_t left : alias.leftOnStack) EXPECT_EQ(left, 0);
    EXPECT_EQ(plain.results, alias.results);
    EXPECT_EQ(plain.outputs, alias.outputs);

    // The sized calls take one argument more and answer as the plain ones do.
    const char* (*const namings[])(const Export&) = {[](const Export& e) { return e.plain; },
                                                      [](const Export& e) { return e.alias; }};
    for (const auto nameOf : namings) {
        const Session sized = runSession(dll_, nameOf, true);
        for (int32_t left : sized.leftOnStack) EXPECT_EQ(left, 0);
        EXPECT_EQ(plain.results, sized.results);
        EXPECT_EQ(plain.outputs, sized.outputs);
    }

    EXPECT_EQ(plain.results[0], RC_OK);       // CmNew
    EXPECT_EQ(plain.outputs[0], 0u);          // the index is the first block wanted
    EXPECT_EQ(plain.results[2], 1u);          // CmGetLut gave a record
    EXPECT_EQ(plain.results[3], RC_ARG + 3);  // HalftoneNew with reserved3 set
    EXPECT_EQ(plain.results[4], RC_OK);       // HalftoneNew
    EXPECT_EQ(plain.results[6], RC_DATA);     // Halftone before the instance is fed
    EXPECT_EQ(plain.results[7], RC_OK);       // HalftoneDelete
    EXPECT_EQ(plain.results[8], RC_OK);       // CmDelete
}

}  // namespace

#endif  // _WIN32 && __i386__
