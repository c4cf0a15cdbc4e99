#include "zelto/platform/errors.h"
#include "zelto/text/exceptions/closed_connection_exception.h"
#include "zelto/text/exceptions/conversion_exception.h"
#include "zelto/text/exceptions/data_exceptions.h"
#include "zelto/text/exceptions/file_system_exception.h"
#include "zelto/text/exceptions/hresult_exception.h"
#include "zelto/text/exceptions/rsa_error.h"
#include "zelto/text/exceptions/system_error_category.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace Zelto::Utilities {
namespace {

static_assert(std::is_nothrow_copy_constructible_v<Win32Exception>);
static_assert(std::is_nothrow_copy_constructible_v<HResultException>);
static_assert(std::is_nothrow_copy_constructible_v<ConversionException>);
static_assert(std::is_nothrow_copy_constructible_v<FileSystemException>);
static_assert(std::is_nothrow_copy_constructible_v<RsaError>);
static_assert(std::is_copy_assignable_v<Win32Exception> && std::is_copy_assignable_v<FileSystemException>);

TEST(Win32Exception, ComposesMessageDescriptionAndUnknownCode) {
  const struct {
    const char* message;
    std::uint32_t code;
    const char* text;
  } cases[] = {
      {"Can't open", 5, "Can't open: Access is denied"},
      {"", 5, "Access is denied"},
      {"Can't open", 1234, "Can't open: unknown error. Error Code: 1234"},
      {"Can't open", 0xFFFFFFFF, "Can't open: unknown error. Error Code: 4294967295"},
      {"", 1234, "unknown error"},
      {"A: unknown error, B", 5, "A: unknown error, B: Access is denied. Error Code: 5"},
  };
  for (const auto& c : cases) {
    const Win32Exception error(c.message, c.code);
    const Win32Exception copy = error;
    EXPECT_STREQ(static_cast<const std::exception&>(copy).what(), c.text);
    EXPECT_EQ(copy.GetErrorCode(), c.code);
  }
}

TEST(Win32Exception, TakesTheLastErrorBeforeAnythingElse) {
  for (const Platform::ErrorCode code : {2U, 233U, 995U}) {
    Platform::SetLastErrorCode(code);
    EXPECT_EQ(Win32Exception("A message that is too long to be stored without an allocation").GetErrorCode(), code);
    Platform::SetLastErrorCode(code);
    EXPECT_EQ(FileSystemException("A message that is rather long", L"/a/path/that/is/long/too").code().value(),
              static_cast<int>(code));
    Platform::SetLastErrorCode(code);
    EXPECT_EQ(FileSystemException("Move", L"a", L"b").code().value(), static_cast<int>(code));
  }
}

TEST(Win32Exception, MapsHresultsByTheHighHalf) {
  const struct {
    std::uint32_t hr;
    std::uint32_t code;
  } cases[] = {{0, 0},    {0x80070000, 0},    {0xFFFF0000, 0},   {0x80070002, 1627}, {0x80070005, 1627},
               {1, 1627}, {0x80004005, 1627}, {0x00070000, 1627}};
  for (const auto& c : cases) {
    EXPECT_EQ(Win32Exception::Win32FromHRESULT(static_cast<std::int32_t>(c.hr)), c.code) << std::hex << c.hr;
  }
}

TEST(SystemErrorCategory, CodesEqualGenericConditions) {
  const std::error_category& category = SystemErrorCategory();
  EXPECT_STREQ(category.name(), "system");
  const auto is = [&category](int code, std::errc condition) { return std::error_code(code, category) == condition; };
  EXPECT_TRUE(is(2, std::errc::no_such_file_or_directory));
  EXPECT_TRUE(is(5, std::errc::permission_denied));
  EXPECT_TRUE(is(183, std::errc::file_exists));
  EXPECT_TRUE(is(1460, std::errc::timed_out));
  EXPECT_FALSE(is(1234, std::errc::io_error));
  EXPECT_TRUE(is(0, std::errc{}));
  EXPECT_FALSE(is(234, std::errc{}));
  EXPECT_FALSE(std::error_code(2, category) == std::error_code(2, std::system_category()));
}

// Every code that the platform room names or makes of an errno must read as a text: exceptions are built from them.
TEST(SystemErrorCategory, DescribesEveryCodeOfTheLibrary) {
  for (const int code : {0,   2,   3,   4,   5,   6,   8,   13,  17,  31,  32,  50,  87,  109,  112,  123,  145,
                         183, 191, 206, 223, 231, 232, 233, 234, 535, 536, 995, 996, 997, 1117, 1168, 1460, 1627}) {
    EXPECT_NE(SystemErrorCategory().message(code), "unknown error") << code;
  }
  for (const int code : {-1, 7, 1234, 99999}) {
    EXPECT_EQ(SystemErrorCategory().message(code), "unknown error") << code;
  }
}

TEST(HResultException, EndsInTheCodeAsEightDigits) {
  const HResultException error("No device.", static_cast<std::int32_t>(0x80004005));
  EXPECT_STREQ(error.what(), "No device.. Error Code: 0x80004005");
  EXPECT_EQ(error.GetErrorCode(), -2147467259);
  EXPECT_STREQ(HResultException("", -1).what(), ". Error Code: 0xFFFFFFFF");
}

TEST(ConversionException, WritesSignedBytesRunTogether) {
  const auto utf8 = ConversionEncoding::Utf8;
  const auto utf16 = ConversionEncoding::Utf16;
  EXPECT_STREQ(ConversionException("Bad", "\xC3\x28", utf8, utf16).what(),
               "Bad. Can't convert bytes: -6140. from UTF-8 to UTF-16");
  EXPECT_STREQ(ConversionException("Bad", "", static_cast<ConversionEncoding>(7), utf8).what(),
               "Bad. Can't convert bytes: . from UNKNOWN to UTF-8");
  EXPECT_STREQ(ConversionException("Bad", L"A\u20AC", utf16, utf8).what(),
               "Bad. Can't convert bytes: 650-8432. from UTF-16 to UTF-8");
  // U+1F600 is D83D DE00, whether the literal holds one unit or two.
  EXPECT_STREQ(ConversionException("Bad", L"\U0001F600", utf16, utf8).what(),
               "Bad. Can't convert bytes: 61-400-34. from UTF-16 to UTF-8");
}

TEST(FileSystemException, WritesBothBlanksAndBytesOfTheSameValue) {
  const FileSystemException one("Can't read", L"C:\\caf\u00E9.txt", 5);
  EXPECT_STREQ(one.what(), "Can't read: Access is denied C:\\caf\xE9.txt ");
  EXPECT_EQ(one.GetErrorMessage(), L"Can't read: Access is denied C:\\caf\u00E9.txt ");

  FileSystemException other("", L"a", L"b", 1234);
  EXPECT_STREQ(other.what(), "unknown error a b");
  EXPECT_EQ(other.path1(), L"a");
  EXPECT_EQ(other.path2(), L"b");
  other = one;
  EXPECT_EQ(other.path1(), L"C:\\caf\u00E9.txt");
  EXPECT_EQ(other.path2(), L"");
  EXPECT_TRUE(other.code() == std::errc::permission_denied);
  EXPECT_STREQ(static_cast<const std::exception&>(other).what(), one.what());

  const FileSystemException taken(std::move(other));
  EXPECT_EQ(taken.path1(), one.path1());
  EXPECT_EQ(other.path1(), one.path1());  // an error that was moved from still has its paths
}

TEST(FileSystemException, FailsOnPathsAboveOneByte) {
  EXPECT_THAT([] { FileSystemException("Can't read", L"\u0100", 5); },
              testing::ThrowsMessage<std::range_error>("bad conversion"));
}

TEST(Exceptions, PlainOnesKeepTheirTexts) {
  EXPECT_STREQ(Communication::ClosedConnectionException("").what(), "Client connection is already closed: ");
  EXPECT_STREQ(Communication::ClosedConnectionException("x").what(), "Client connection is already closed: x");
  EXPECT_STREQ(DataFilterException("x").what(), "x");
  EXPECT_STREQ(DataPaginationException("").what(), "");
}

TEST(RsaError, HasItsTextOnlyOnItself) {
  RsaError error("no key");
  EXPECT_EQ(error.what(), "no key");
  EXPECT_STREQ(static_cast<const std::exception&>(error).what(), std::exception().what());
  static_assert(std::is_same_v<decltype(error.what()), std::string>);
}

}  // namespace
}  // namespace Zelto::Utilities
