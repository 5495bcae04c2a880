#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>
#include <string_view>
#include <vector>

namespace test {

using Bytes = std::vector<uint8_t>;

// A record as the other library sees it: zeros, and little-endian values put at literal offsets.
class RecordBytes {
public:
    explicit RecordBytes(size_t size, uint8_t everywhere = 0) : mBytes(size, everywhere) {}

    template <typename Integer, typename... Following>
    RecordBytes& put(size_t offset, Integer value, Following... following) {
        for (size_t i = 0; i < sizeof value; ++i) {
            mBytes.at(offset + i) = static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i));
        }
        if constexpr (sizeof...(following) > 0) put(offset + sizeof value, following...);
        return *this;
    }
    RecordBytes& text(size_t offset, std::string_view text) {
        for (size_t i = 0; i < text.size(); ++i) put(offset + i, text[i]);
        return *this;
    }

    // In memory of exactly its size, so that the address sanitizer sees a read past its end.
    template <typename Record>
    [[nodiscard]] std::unique_ptr<Record> as() const {
        auto record = std::make_unique<Record>();
        EXPECT_EQ(mBytes.size(), sizeof(Record));
        std::memcpy(record.get(), mBytes.data(), sizeof(Record));
        return record;
    }

    friend bool operator==(const Bytes& bytes, const RecordBytes& record) { return bytes == record.mBytes; }
    friend void PrintTo(const RecordBytes& record, std::ostream* out) { *out << testing::PrintToString(record.mBytes); }

private:
    Bytes mBytes;
};

template <typename Record>
Bytes bytesOf(const Record& record) {
    Bytes bytes(sizeof record);
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

}  // namespace test
