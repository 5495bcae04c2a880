#include "binder/tests/Echo.h"
#include "tests/support/LogCapture.h"

#include <android/binder_parcelable_utils.h>
#include <android/binder_to_string.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace std::string_literals;
using Bytes = std::vector<uint8_t>;

/** A parcel of these bytes, to be read from its begin. */
ndk::ScopedAParcel parcelOf(const Bytes& bytes) {
    ndk::ScopedAParcel parcel(AParcel_create());
    AParcel_unmarshal(parcel.get(), bytes.data(), bytes.size());
    return parcel;
}

struct Record {
    int32_t number = 0;
    binder_status_t writeToParcel(AParcel* parcel) const { return AParcel_writeInt32(parcel, number); }
    binder_status_t readFromParcel(const AParcel* parcel) { return AParcel_readInt32(parcel, &number); }
    bool operator==(const Record&) const = default;
};

enum class Colour : int32_t { RED = 3, BLUE = -2 };

/** Written, these are the bytes; read, it is the value again and nothing is left. */
template <typename T>
void expectLayout(const T& value, const Bytes& bytes,
                  binder_status_t (*write)(AParcel*, const T&) = ndk::AParcel_writeData<T>,
                  binder_status_t (*readBack)(const AParcel*, T*) = ndk::AParcel_readData<T>) {
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(STATUS_OK, write(parcel.get(), value));
    EXPECT_EQ(bytes, test::contentOf(parcel.get()));
    T read{};
    ASSERT_EQ(STATUS_OK, AParcel_setDataPosition(parcel.get(), 0));
    ASSERT_EQ(STATUS_OK, readBack(parcel.get(), &read));
    EXPECT_EQ(value, read);
    EXPECT_EQ(AParcel_getDataSize(parcel.get()), AParcel_getDataPosition(parcel.get()));
}

template <typename T>
void expectNullableLayout(const T& value, const Bytes& bytes) {
    expectLayout(value, bytes, ndk::AParcel_writeNullableData<T>, ndk::AParcel_readNullableData<T>);
}

TEST(ParcelTest, WriteData_WhenWrittenAndRead_ThenTheBytesAreThoseOfADevice) {
    expectLayout(true, {1, 0, 0, 0});
    expectLayout(int8_t{-2}, {0xfe, 0xff, 0xff, 0xff});
    expectLayout(int32_t{0x01020304}, {4, 3, 2, 1});
    expectLayout(int64_t{0x0102030405060708}, {8, 7, 6, 5, 4, 3, 2, 1});
    expectLayout(u'\x20ac', {0xac, 0x20, 0, 0});
    expectLayout(uint32_t{0xfffefdfc}, {0xfc, 0xfd, 0xfe, 0xff});
    expectLayout(uint64_t{1} << 63, {0, 0, 0, 0, 0, 0, 0, 0x80});
    expectLayout(1.5F, {0, 0, 0xc0, 0x3f});
    expectLayout(-2.0, {0, 0, 0, 0, 0, 0, 0, 0xc0});
    expectLayout(Colour::BLUE, {0xfe, 0xff, 0xff, 0xff});
    expectLayout(""s, {0, 0, 0, 0, 0, 0, 0, 0});
    expectLayout("a\0b"s, {3, 0, 0, 0, 'a', 0, 0, 0, 'b', 0, 0, 0});
    expectLayout("\xf0\x9f\x98\x80"s, {2, 0, 0, 0, 0x3d, 0xd8, 0x00, 0xde, 0, 0, 0, 0});
    expectLayout(Bytes{1, 2, 3, 4, 5}, {5, 0, 0, 0, 1, 2, 3, 4, 5, 0, 0, 0});
    expectLayout(Bytes{}, {0, 0, 0, 0});
    expectLayout(std::vector<int32_t>{1, -1}, {2, 0, 0, 0, 1, 0, 0, 0, 0xff, 0xff, 0xff, 0xff});
    expectLayout(std::vector<int64_t>{1}, {1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0});
    expectLayout(std::vector<bool>{true, false}, {2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0});
    expectLayout(std::vector<float>{1.5F}, {1, 0, 0, 0, 0, 0, 0xc0, 0x3f});
    expectLayout(std::vector<double>{}, {0, 0, 0, 0});
    expectLayout(std::vector<char16_t>{u'a', u'b'}, {2, 0, 0, 0, 'a', 0, 0, 0, 'b', 0, 0, 0});
    expectLayout(std::vector<std::string>{"a", ""}, {2, 0, 0, 0, 1, 0, 0, 0, 'a', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    expectLayout(std::array<int32_t, 1>{7}, {1, 0, 0, 0, 7, 0, 0, 0});
    expectLayout(std::vector<std::optional<std::string>>{std::nullopt}, {1, 0, 0, 0, 0xff, 0xff, 0xff, 0xff});
    expectLayout(std::vector<Colour>{Colour::RED}, {1, 0, 0, 0, 3, 0, 0, 0});
    expectLayout(Record{7}, {1, 0, 0, 0, 7, 0, 0, 0});
    expectLayout(std::vector<Record>{{7}}, {1, 0, 0, 0, 1, 0, 0, 0, 7, 0, 0, 0});
    expectNullableLayout(std::optional<std::string>(), {0xff, 0xff, 0xff, 0xff});
    expectNullableLayout(std::optional<Bytes>(), {0xff, 0xff, 0xff, 0xff});
    expectNullableLayout(std::optional(Bytes{9}), {1, 0, 0, 0, 9, 0, 0, 0});
    expectNullableLayout(std::optional(std::vector<bool>{true}), {1, 0, 0, 0, 1, 0, 0, 0});
    expectNullableLayout(std::optional<Record>(), {0, 0, 0, 0});
    expectNullableLayout(std::optional(Record{7}), {1, 0, 0, 0, 7, 0, 0, 0});
}

TEST(ParcelTest, PrepareTransaction_WhenTheClassIsKnown_ThenItBeginsWithTheToken) {
    EXPECT_EQ((Bytes{0,   0, 0,   0x80, 0xff, 0xff, 0xff, 0xff, 'T', 'S', 'Y', 'S', 10,  0, 0,   0, 't', 0, 'e', 0,
                     's', 0, 't', 0,    '.',  0,    'I',  0,    'E', 0,   'c', 0,   'h', 0, 'o', 0, 0,   0, 0,   0}),
              test::token());
}

TEST(ParcelTest, StringArray_WhenWrittenAndRead_ThenElementsMayBeNull) {
    const std::vector<const char*> texts{"a", nullptr, ""};
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(STATUS_OK,
              AParcel_writeStringArray(parcel.get(), texts.data(), 3, [](const void* all, size_t i, int32_t* size) {
                  const char* const text = static_cast<const char* const*>(all)[i];
                  *size = text == nullptr ? -1 : static_cast<int32_t>(strlen(text));
                  return text;
              }));
    AParcel_setDataPosition(parcel.get(), 0);
    std::vector<std::optional<std::string>> read;
    ASSERT_EQ(STATUS_OK, ndk::AParcel_readData(parcel.get(), &read));
    EXPECT_EQ((std::vector<std::optional<std::string>>{"a", std::nullopt, ""}), read);
}

TEST(ToStringTest, ToString_WhenGivenAnyValue_ThenItsText) {
    using android::internal::ToString;
    EXPECT_EQ("true", ToString(true));
    EXPECT_EQ("-3", ToString(int8_t{-3}));
    EXPECT_EQ("97", ToString(u'a'));
    EXPECT_EQ("1.5", ToString(1.5));
    EXPECT_EQ("-2", ToString(Colour::BLUE));
    EXPECT_EQ("[a, (null)]", ToString(std::vector<std::optional<std::string>>{"a", std::nullopt}));
    EXPECT_EQ("[true, false]", ToString(std::vector<bool>{true, false}));
    EXPECT_EQ("(null)", ToString(ndk::SpAIBinder()));
}

template <typename T>
binder_status_t reading(const Bytes& bytes) {
    T value{};
    return ndk::AParcel_readData(parcelOf(bytes).get(), &value);
}

TEST(ParcelTest, ReadData_WhenTheParcelIsShortOrWrong_ThenTheStatusSaysHow) {
    const Bytes huge{0xff, 0xff, 0xff, 0x7f};
    const Bytes null{0xff, 0xff, 0xff, 0xff};
    const Bytes below{0xfe, 0xff, 0xff, 0xff};
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, reading<bool>({}));
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, reading<int8_t>({1, 0, 0}));
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, reading<int32_t>({1, 0, 0}));
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, reading<int64_t>({1, 0, 0, 0}));
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, reading<Bytes>({}));
    EXPECT_EQ(STATUS_NO_MEMORY, reading<Bytes>(huge));
    EXPECT_EQ(STATUS_NO_MEMORY, reading<Bytes>({2, 0, 0, 0, 1}));
    EXPECT_EQ(STATUS_NO_MEMORY, reading<std::vector<int64_t>>({1, 0, 0, 0, 1, 2, 3, 4}));
    EXPECT_EQ(STATUS_NO_MEMORY, reading<std::vector<bool>>(huge));
    EXPECT_EQ(STATUS_NO_MEMORY, reading<std::vector<Record>>(huge));
    EXPECT_EQ(STATUS_BAD_VALUE, reading<Bytes>(below));
    EXPECT_EQ(STATUS_BAD_VALUE, reading<std::vector<Record>>(below));
    EXPECT_EQ(STATUS_NO_MEMORY, (reading<std::array<int32_t, 2>>({1, 0, 0, 0, 7, 0, 0, 0}))) << "another length";
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, reading<Bytes>(null));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, reading<std::vector<bool>>(null));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, reading<std::vector<Record>>(null));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, reading<Record>({0, 0, 0, 0}));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, reading<std::string>({}));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, reading<std::string>(huge));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, reading<std::string>({2, 0, 0, 0, 'a', 0, 'b', 0})) << "no terminator";
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, reading<std::string>({1, 0, 0, 0, 'a', 0, 'b', 0})) << "another one";
    EXPECT_EQ(STATUS_BAD_TYPE, reading<ndk::SpAIBinder>({}));
    EXPECT_EQ(STATUS_BAD_TYPE, reading<ndk::SpAIBinder>({1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, reading<ndk::SpAIBinder>(Bytes(16)));
    std::optional<std::string> cut("kept");
    EXPECT_EQ(STATUS_OK, ndk::AParcel_readNullableData(parcelOf({9, 0, 0, 0, 'a'}).get(), &cut));
    EXPECT_EQ(std::nullopt, cut);
}

TEST(ParcelTest, WriteString_WhenItIsNoUtf8_ThenReplacedAndACutEndIsRefused) {
    const auto there = [](const std::string& text) {
        ndk::ScopedAParcel parcel(AParcel_create());
        std::string back;
        if (const auto status = ndk::AParcel_writeString(parcel.get(), text); status != STATUS_OK) return "!"s;
        AParcel_setDataPosition(parcel.get(), 0);
        return ndk::AParcel_readString(parcel.get(), &back) == STATUS_OK ? back : "?"s;
    };
    const std::string mark = "\xef\xbf\xbd";
    for (const std::string& valid :
         {"\xc2\x80"s, "\xef\xbf\xbf"s, "\xf4\x8f\xbf\xbf"s, "\x7f"s, "\xee\x80\x80"s, std::string(100'000, 'x')}) {
        EXPECT_EQ(valid, there(valid));
    }
    EXPECT_EQ(mark + "!", there("\xff!"));
    EXPECT_EQ(mark + mark, there("\xc0\x80")) << "overlong";
    for (const auto* surrogate : {"\xed\xa0\x80", "\xed\xbf\xbf"}) EXPECT_EQ(mark + mark + mark, there(surrogate));
    EXPECT_EQ(mark + mark + mark + mark, there("\xf4\x90\x80\x80")) << "past the end";
    EXPECT_EQ(mark + "!", there("\xe2!"));
    const test::LogCapture log;
    for (const std::string& cut : {"\xc3"s, "a\xe2\x82"s, "\xf0\x9f\x98"s}) EXPECT_EQ("!", there(cut));
    const std::string line = "a string for a parcel ends inside a UTF-8 sequence: refused, and its call with it";
    EXPECT_EQ(log.count("Binder", line, ANDROID_LOG_WARN), 1U);  // The same line comes once a second at most.
    for (const Bytes& lone : {Bytes{1, 0, 0, 0, 0, 0xd8, 0, 0}, Bytes{1, 0, 0, 0, 0, 0xdc, 0, 0}}) {
        std::string text;
        EXPECT_EQ(STATUS_OK, ndk::AParcel_readString(parcelOf(lone).get(), &text));
        EXPECT_EQ(mark, text);
    }
}

TEST(ParcelTest, WriteArray_WhenLengthAndPointerDisagree_ThenBadValue) {
    ndk::ScopedAParcel parcel(AParcel_create());
    const int8_t byte = 0;
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_writeByteArray(parcel.get(), &byte, -2));
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_writeByteArray(parcel.get(), nullptr, 1));
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_writeString(parcel.get(), nullptr, 0));
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_writeString(parcel.get(), "", -1));
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_setDataPosition(parcel.get(), -1));
    EXPECT_EQ(0, AParcel_getDataSize(parcel.get()));
    EXPECT_EQ(STATUS_OK, AParcel_writeByteArray(parcel.get(), nullptr, -1));
    EXPECT_EQ(Bytes(4, 0xff), test::contentOf(parcel.get()));
}

TEST(ParcelTest, SetDataPosition_WhenPastTheEnd_ThenNothingToReadAndAWriteFillsTheGap) {
    ndk::ScopedAParcel parcel(AParcel_create());
    AParcel_writeInt32(parcel.get(), 7);
    ASSERT_EQ(STATUS_OK, AParcel_setDataPosition(parcel.get(), 12));
    int32_t value = 0;
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, AParcel_readInt32(parcel.get(), &value));
    EXPECT_EQ(4, AParcel_getDataSize(parcel.get()));
    AParcel_writeInt32(parcel.get(), 9);
    EXPECT_EQ((Bytes{7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9, 0, 0, 0}), test::contentOf(parcel.get()));
}

TEST(ParcelTest, SetDataPosition_WhenWritingOverAnObject_ThenItIsGone) {
    ndk::ScopedAParcel parcel(AParcel_create());
    bool destroyed = false;
    auto* echo = new test::Echo;
    echo->onDestroy = [&] { destroyed = true; };
    ASSERT_EQ(STATUS_OK, AParcel_writeStrongBinder(parcel.get(), test::newEcho(echo).get()));
    ASSERT_EQ(STATUS_OK, AParcel_writeStrongBinder(parcel.get(), test::newEcho(new test::Echo).get()));
    AParcel_setDataPosition(parcel.get(), 12);
    EXPECT_FALSE(destroyed);
    AParcel_writeInt32(parcel.get(), 1);
    EXPECT_TRUE(destroyed);
    AParcel_setDataPosition(parcel.get(), 0);
    ndk::SpAIBinder object;
    EXPECT_EQ(STATUS_BAD_TYPE, ndk::AParcel_readRequiredStrongBinder(parcel.get(), &object));
    AParcel_setDataPosition(parcel.get(), 16);
    EXPECT_EQ(STATUS_OK, ndk::AParcel_readRequiredStrongBinder(parcel.get(), &object));
}

TEST(ParcelTest, WriteStatusHeader_WhenReadBack_ThenTheSameStatus) {
    struct Case {
        ndk::ScopedAStatus status;
        Bytes bytes;
        std::string description;
    };
    Case cases[] = {
        {ndk::ScopedAStatus::ok(), {0, 0, 0, 0}, "No error"},
        {ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT, "msg"),
         {0xfd, 0xff, 0xff, 0xff, 3, 0, 0, 0, 'm', 0, 's', 0, 'g', 0, 0, 0, 0, 0, 0, 0},
         "Status(-3, EX_ILLEGAL_ARGUMENT): 'msg'"},
        {ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(3, "msg"),
         {0xf8, 0xff, 0xff, 0xff, 3, 0, 0, 0, 'm', 0, 's', 0, 'g', 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0},
         "Status(-8, EX_SERVICE_SPECIFIC): '3: msg'"},
    };
    for (Case& each : cases) {
        ndk::ScopedAParcel parcel(AParcel_create());
        ASSERT_EQ(STATUS_OK, AParcel_writeStatusHeader(parcel.get(), each.status.get()));
        EXPECT_EQ(each.bytes, test::contentOf(parcel.get()));
        AParcel_setDataPosition(parcel.get(), 0);
        ndk::ScopedAStatus read;
        ASSERT_EQ(STATUS_OK, AParcel_readStatusHeader(parcel.get(), read.getR()));
        EXPECT_EQ(each.description, read.getDescription());
        EXPECT_EQ(each.status.getServiceSpecificError(), read.getServiceSpecificError());
        EXPECT_EQ(each.status.isOk(), read.isOk());
    }
    ndk::ScopedAStatus read;
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, AParcel_readStatusHeader(parcelOf({1, 0}).get(), read.getR()));
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA,
              AParcel_readStatusHeader(parcelOf({0xf8, 0xff, 0xff, 0xff, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}).get(),
                                       read.getR()));
}

TEST(StatusTest, FromStatus_WhenTheTransactionFailed_ThenItIsTheTransportsAndNoHeader) {
    const auto dead = ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    EXPECT_EQ("Status(-129, EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '", dead.getDescription());
    EXPECT_EQ(STATUS_DEAD_OBJECT, dead.getStatus());
    EXPECT_EQ(EX_TRANSACTION_FAILED, dead.getExceptionCode());
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(STATUS_DEAD_OBJECT, AParcel_writeStatusHeader(parcel.get(), dead.get()));
    EXPECT_EQ(0, AParcel_getDataSize(parcel.get()));
    EXPECT_TRUE(ndk::ScopedAStatus::fromStatus(STATUS_OK).isOk());
    EXPECT_EQ(STATUS_UNKNOWN_ERROR, ndk::ScopedAStatus::fromStatus(-7777).getStatus());
    EXPECT_EQ(EX_TRANSACTION_FAILED, ndk::ScopedAStatus::fromExceptionCode(-77).getExceptionCode());
}

}  // namespace
