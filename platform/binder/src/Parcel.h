#pragma once

#include "Frame.h"

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

// Data and the objects in it. The data lies in one buffer that has room for a frame's header in front and for the
// objects' offsets behind, so that a frame is sent with one write and no copy. Small ones need no allocation.
struct AParcel {
public:
    struct Object {
        uint32_t offset;
        ndk::SpAIBinder binder;
    };

    explicit AParcel(const AIBinder* target = nullptr) : mTarget(target) {}
    AParcel(AParcel&& other) noexcept;
    // Keeps its own target.
    AParcel& operator=(AParcel&& other) noexcept;
    ~AParcel() = default;

    void reset();

    [[nodiscard]] const AIBinder* target() const { return mTarget; }
    [[nodiscard]] const uint8_t* data() const { return mBytes + sizeof(binder::FrameHeader); }
    [[nodiscard]] size_t size() const { return mSize; }
    // With the offsets of the objects.
    [[nodiscard]] size_t transportSize() const { return mSize + mObjects.size() * sizeof(uint32_t); }
    [[nodiscard]] size_t position() const { return mPosition; }
    [[nodiscard]] size_t remaining() const { return mPosition < mSize ? mSize - mPosition : 0; }
    // May lie past the end: nothing can be read there, and writing fills the gap with zeroes.
    void setPosition(size_t position) const { mPosition = position; }
    [[nodiscard]] std::vector<Object>& objects() { return mObjects; }

    // Room for `size` bytes at the position, which moves behind them and the zeroed padding to four. Null when there is
    // no memory.
    [[nodiscard]] uint8_t* append(size_t size) {
        const size_t end = mPosition + padded(size);
        if (mPosition != mSize || sizeof(binder::FrameHeader) + end > mCapacity) return appendSlowly(size);
        uint8_t* const place = mBytes + sizeof(binder::FrameHeader) + mPosition;
        for (uint8_t* pad = place + size; pad != place + padded(size); ++pad) *pad = 0;
        mPosition = mSize = end;
        return place;
    }
    // The next `size` bytes, or null when fewer are left; the position moves behind them and their padding.
    [[nodiscard]] const uint8_t* take(size_t size) const {
        if (size > remaining()) return nullptr;
        const uint8_t* const bytes = data() + mPosition;
        mPosition += padded(size) < remaining() ? padded(size) : remaining();
        return bytes;
    }

    [[nodiscard]] binder_status_t writeObject(AIBinder* binder);
    binder_status_t readObject(AIBinder** binder) const;

    // Replaces the content by the data of a frame that was received, behind which lie the offsets of its objects. The
    // caller adds the objects before anything else.
    void assign(const uint8_t* data, size_t size, size_t offsets = 0);
    [[nodiscard]] size_t offsetCount() const { return mOffsets; }
    [[nodiscard]] uint32_t offsetAt(size_t index) const;
    void setFlatObject(size_t offset, binder::FlatObject object);
    // The bytes to send: header, data, offsets; valid until the next change.
    [[nodiscard]] std::basic_string_view<uint8_t> frame(binder::FrameKind kind, uint32_t target, uint32_t code);

private:
    static constexpr size_t padded(size_t size) { return (size + 3) & ~size_t{3}; }
    uint8_t* appendSlowly(size_t size);
    [[nodiscard]] bool reserve(size_t size);
    void mustReserve(size_t size);
    void forgetObjects(size_t begin, size_t end);

    static constexpr size_t INLINE = 320;

    const AIBinder* mTarget;
    uint8_t* mBytes = mInline;
    size_t mCapacity = INLINE;  // header included
    size_t mSize = 0;           // header not included
    mutable size_t mPosition = 0;
    size_t mOffsets = 0;  // that lie behind the data
    std::unique_ptr<uint8_t[]> mHeap;
    std::vector<Object> mObjects;  // by offset
    alignas(8) uint8_t mInline[INLINE];
};

namespace binder {

// Appends `text` in UTF-16; STATUS_BAD_VALUE when its last sequence is cut.
[[nodiscard]] binder_status_t writeString(AParcel& parcel, std::string_view text);

}  // namespace binder
