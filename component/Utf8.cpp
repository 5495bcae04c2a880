#include "component/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace hal {

namespace {

// Bytes of the sequence that `lead` begins; 0 when it begins none.
size_t sequenceLength(uint8_t lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xc2 || lead > 0xf4) return 0;
    return lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
}

// Where the sequence begins that the text ends inside of; its size when there is none.
size_t findCut(const std::string& text) {
    for (size_t present = 1; present < 4 && present <= text.size(); ++present) {
        const auto byte = static_cast<uint8_t>(text[text.size() - present]);
        if ((byte & 0xc0) == 0x80) continue;
        return text.size() - (present < sequenceLength(byte) ? present : 0);
    }
    return text.size();
}

}  // namespace

bool dropCutSequence(std::string& text) {
    const size_t size = text.size();
    // Without it the text may end inside the one before: a sequence that is cut by another is merely invalid.
    for (size_t cut = findCut(text); cut < text.size(); cut = findCut(text)) text.resize(cut);
    return text.size() < size;
}

}  // namespace hal
