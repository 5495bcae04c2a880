#include "Mark.h"

#include <cutils/trace.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace binder {
namespace {

constexpr uint64_t TAG = ATRACE_TAG_AIDL;

// "oneway to 4711, code 7, 64 bytes, at 1024"
class Name {
public:
    Name(std::string_view text, pid_t peer, uint32_t code, size_t size, uint64_t place) {
        mEnd = std::copy(text.begin(), text.end(), mEnd);
        add(static_cast<uint32_t>(peer)).add(", code ").add(code).add(", ").add(size).add(" bytes");
        if (place != 0) add(", at ").add(place);
        *mEnd = '\0';
    }
    [[nodiscard]] const char* c_str() const { return mText.data(); }

private:
    template <size_t SIZE>
    Name& add(const char (&text)[SIZE]) {
        mEnd = std::copy_n(text, SIZE - 1, mEnd);
        return *this;
    }
    template <typename Number>
    Name& add(Number number) {
        mEnd = std::to_chars(mEnd, mText.end(), number).ptr;
        return *this;
    }

    std::array<char, 128> mText;  // has room for the longest numbers
    char* mEnd = mText.data();
};

}  // namespace

CallSection::CallSection(std::string_view text, pid_t peer, uint32_t code, size_t size, uint64_t place) {
    if (atrace_is_tag_enabled(TAG) != 0) atrace_begin(TAG, Name(text, peer, code, size, place).c_str());
}

CallSection::~CallSection() {
    atrace_end(TAG);
}

void markSent(pid_t peer, uint32_t code, size_t size, uint64_t place) {
    if (atrace_is_tag_enabled(TAG) != 0) atrace_instant(TAG, Name("oneway to ", peer, code, size, place).c_str());
}

}  // namespace binder
