// Parser of the resource index text.
#include "cm/index_text.h"

#include <cstring>

namespace inkdot {
namespace {

constexpr uint8_t kCr = 13;
constexpr uint8_t kLf = 10;
constexpr uint8_t kSub = 26;  // end-of-file character of the driver's text files

bool endsLine(uint8_t c) { return c == kCr || c == kLf || c == 0 || c == kSub; }
bool endsText(uint8_t c) { return c == 0 || c == kSub; }
bool isBlank(uint8_t c) { return c == ' ' || c == '\t'; }

using Token = char[kIndexMaxTokenChars + 1];

// Reads tokens and lines. Every copy is bounded; a copy that would exceed a
// capacity marks the text broken, and the parse then ends with no records.
// At NUL, SUB or the end of the block the cursor stops for good: tokens and
// lines there are empty.
struct Cursor {
    ByteView text;
    size_t at;
    bool broken = false;

    uint8_t here() const { return text.u8(at); }  // 0 past the end of the block

    // Skips blanks, then copies up to the next blank or line end. At a line
    // end the token is empty and the position stays.
    void token(Token& out) {
        out[0] = '\0';
        if (broken) return;
        while (isBlank(here())) ++at;
        int length = 0;
        while (!isBlank(here()) && !endsLine(here())) {
            if (length == kIndexMaxTokenChars) {
                // Too long: the text is broken, and the token reads as empty
                // so that nobody converts or copies a half-read one.
                broken = true;
                out[0] = '\0';
                return;
            }
            out[length++] = static_cast<char>(here());
            ++at;
        }
        out[length] = '\0';
    }

    // Passes the characters up to the next line end (at most 255 of them),
    // then every CR and LF that follows, so empty lines vanish.
    void line() {
        if (broken) return;
        int length = 0;
        while (!endsLine(here())) {
            if (length == kIndexMaxTokenChars) { broken = true; return; }
            ++length;
            ++at;
        }
        while (here() == kCr || here() == kLf) ++at;
    }

    void name(IndexName& out) {
        Token t;
        token(t);
        if (std::strlen(t) > static_cast<size_t>(kIndexMaxNameChars)) { broken = true; return; }
        std::memcpy(out, t, std::strlen(t) + 1);
    }

    int32_t number() {
        Token t;
        token(t);
        return indexTokenNumber(t);
    }
};

// Reads the tokens of the rest of the line as names, up to capacity.
// `first` is a token already read (or empty to start reading).
int32_t readNameList(Cursor& cur, const char* first, IndexName* list, int capacity) {
    int32_t count = 0;
    Token t;
    std::memcpy(t, first, std::strlen(first) + 1);
    if (t[0] == '\0') cur.token(t);
    while (!cur.broken && t[0] != '\0') {
        if (count == capacity || std::strlen(t) > static_cast<size_t>(kIndexMaxNameChars)) {
            cur.broken = true;
            break;
        }
        std::memcpy(list[count++], t, std::strlen(t) + 1);
        cur.token(t);
    }
    cur.line();
    return count;
}

// Position of the last entry equal to `name`, or -1.
int32_t lastPosition(const IndexName* list, int32_t count, const char* name) {
    int32_t found = -1;
    for (int32_t i = 0; i < count; ++i) {
        if (std::strcmp(list[i], name) == 0) found = i;
    }
    return found;
}

// Position just behind the first "//" before the end of the text; 0 when
// there is none (a marker ends at position 2 at the earliest).
size_t findMarker(ByteView text) {
    for (size_t p = 0; !endsText(text.u8(p)); ++p) {
        if (text.u8(p) == '/' && text.u8(p + 1) == '/') return p + 2;
    }
    return 0;
}

}  // namespace

int32_t indexTokenNumber(const char* token) {
    uint32_t value = 0;  // unsigned so that long digit runs wrap instead of overflowing
    bool negative = false;
    for (const char* c = token; *c != '\0'; ++c) {
        if (*c == '-') {
            negative = true;
        } else {
            value = value * 10u + static_cast<uint32_t>(static_cast<int32_t>(*c) - '0');
        }
    }
    return static_cast<int32_t>(negative ? 0u - value : value);
}

namespace {

// The record lines up to and including the one whose ninth token starts with
// '/'; tokens after the ninth are ignored. More records than the table holds
// break the text.
int32_t readRecords(Cursor& cur, IndexText* out) {
    int32_t count = 0;
    Token first;
    Token last;
    do {
        cur.token(first);
        if (cur.broken || first[0] == '/') break;
        if (count == kIndexMaxRecords) {
            cur.broken = true;
            break;
        }
        IndexRecord& rec = out->records[count];
        rec.blockNo = indexTokenNumber(first);
        const int32_t tableId = cur.number();
        rec.tableId = tableId == 0 ? -1 : tableId;
        cur.name(rec.name1);
        cur.name(rec.name2);
        rec.key5 = cur.number();
        rec.key6 = cur.number();
        cur.name(rec.name3);
        rec.key8 = cur.number();
        cur.token(last);
        rec.key9 = indexTokenNumber(last);
        cur.line();
        ++count;
    } while (!cur.broken && last[0] != '/');
    cur.line();  // rest of the '/' line
    return count;
}

// Each record's names as their last positions in the three lists.
void resolvePositions(IndexText* out, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        IndexRecord& rec = out->records[i];
        const int32_t p1 = lastPosition(out->list1, out->list1Count, rec.name1);
        const int32_t p2 = lastPosition(out->list2, out->list2Count, rec.name2);
        const int32_t p3 = lastPosition(out->list3, out->list3Count, rec.name3);
        rec.pos1 = p1 < 0 ? 0 : p1;
        rec.num2 = p2 < 0 ? 0 : out->list2Base + p2;  // an absent name is 0, not the base
        rec.pos3 = p3 < 0 ? 0 : p3;
    }
}

}  // namespace

int32_t parseIndexText(ByteView text, IndexText* out) {
    out->recordCount = 0;
    const size_t afterMarker = findMarker(text);
    if (afterMarker == 0 || text.u8(afterMarker) != '3') return 0;

    Cursor cur{text, afterMarker + 1};
    cur.line();  // rest of the version line
    cur.line();  // heading line
    const int32_t count = readRecords(cur, out);
    out->list1Count = readNameList(cur, "", out->list1, kIndexMaxList1);

    Token lead;
    cur.token(lead);
    if (lead[0] != 'P') {
        out->list2Base = indexTokenNumber(lead);
        lead[0] = '\0';
    }
    out->list2Count = readNameList(cur, lead, out->list2, kIndexMaxList2);
    out->list3Count = readNameList(cur, "", out->list3, kIndexMaxList3);

    Token flag;
    cur.token(flag);  // the flag line influences nothing
    if (cur.broken) return 0;
    resolvePositions(out, count);
    out->recordCount = count;
    return count;
}

}  // namespace inkdot
