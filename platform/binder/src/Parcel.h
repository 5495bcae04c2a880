#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Frame.h"

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
    AParcel& operator=(AParcel&&) = delete;
    ~AParcel() = default;

    void reset();

    [[nodiscard]] const AIBinder* target() const { return mTarget; }
    [[nodiscard]] const uint8_t* data() const { return mBytes + sizeof(binder::FrameHeader); }
    [[nodiscard]] size_t size() const { return mSize; }
    [[nodiscard]] size_t position() const { return mPosition; }
    [[nodiscard]] size_t remaining() const { return mPosition < mSize ? mSize - mPosition : 0; }
    void setPosition(size_t position) const { mPosition = position; }
    [[nodiscard]] std::vector<Object>& objects() { return mObjects; }

    // Room for `size` bytes at the position, which moves behind them and the zeroed padding to four.
    uint8_t* append(size_t size);
    // The next `size` bytes, or null when fewer are left; the position moves behind them and their padding.
    const uint8_t* take(size_t size) const;

    void writeObject(AIBinder* binder);
    binder_status_t readObject(AIBinder** binder) const;

    // Replaces the content by the data of a frame that was received. Its objects are added by the caller.
    void assign(const uint8_t* data, size_t size);
    void setFlatObject(size_t offset, binder::FlatObject object);
    // The bytes to send: header, data, offsets; valid until the next change.
    std::basic_string_view<uint8_t> frame(binder::FrameKind kind, uint32_t target, uint32_t code);

private:
    void reserve(size_t size);
    void forgetObjects(size_t begin, size_t end);

    static constexpr size_t kInline = 320;

    const AIBinder* mTarget;
    uint8_t* mBytes = mInline;
    size_t mCapacity = kInline;  // header included
    size_t mSize = 0;            // header not included
    mutable size_t mPosition = 0;
    std::unique_ptr<uint8_t[]> mHeap;
    std::vector<Object> mObjects;  // by offset
    alignas(8) uint8_t mInline[kInline];
};

namespace binder {

// Appends `text` in UTF-16; STATUS_BAD_VALUE when its last sequence is cut.
[[nodiscard]] binder_status_t writeString(AParcel& parcel, std::string_view text);

}  // namespace binder
