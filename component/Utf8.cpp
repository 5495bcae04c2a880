#include "component/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace hal {

namespace {

// Bytes of the sequence that the byte announces, whether or not it may begin one: binders differ in what they check.
size_t announcedLength(uint8_t byte) {
    return byte < 0xc0 ? 1 : byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
}

// Where the last sequence begins that is announced and not whole; the text's size when there is none.
size_t findCut(const std::string& text) {
    for (size_t present = 1; present < 4 && present <= text.size(); ++present) {
        const auto byte = static_cast<uint8_t>(text[text.size() - present]);
        if (present < announcedLength(byte)) return text.size() - present;
    }
    return text.size();
}

}  // namespace

bool dropCutSequence(std::string& text) {
    const size_t size = text.size();
    // Without it the text may end inside the one before.
    for (size_t cut = findCut(text); cut < text.size(); cut = findCut(text)) text.resize(cut);
    return text.size() < size;
}

}  // namespace hal
