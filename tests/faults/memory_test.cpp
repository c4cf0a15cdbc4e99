// What the text and JSON rooms do when an allocation fails, each one in turn: they throw `std::bad_alloc`, keep their
// promises about what stays unchanged, and lose nothing. Nor does a log lose a backup, or a pipe a write that it took.
#include "tests/faults/failing_allocations.h"
#include "tests/pipes/pipe_fixture.h"
#include "tests/support/diagnostics_recorder.h"
#include "tests/support/temp_folder.h"
#include "zelto/files/file_appender.h"
#include "zelto/json/data_object.h"
#include "zelto/json/json_encoder.h"
#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"
#include "zelto/json/lexer.h"
#include "zelto/text/base64.h"
#include "zelto/text/diagnostics.h"
#include "zelto/text/exceptions/conversion_exception.h"
#include "zelto/text/exceptions/file_system_exception.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"
#include "zelto/text/url_encoding.h"
#include "zelto/text/wildcard_pattern.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

namespace Zelto::Utilities {
namespace {

using Json::DataObject;
using Json::DataValue;
using Json::JsonReader;
using Json::JsonWriter;
using Testing::LiveBlocks;
using Testing::RunWithFailure;

constexpr std::size_t kMostAllocations = 5000;

/// Calls `run` with the number of each allocation in turn, until it tells that there is none left to fail.
template <typename Run>
void ForEachAllocation(const Run& run) {
  std::size_t number = 0;
  for (bool failed = true; failed; ++number) {
    SCOPED_TRACE(testing::Message() << "allocation " << number);
    ASSERT_LT(number, kMostAllocations) << "no end of allocations";
    failed = run(number);
  }
  EXPECT_GT(number, 1U) << "nothing was allocated";
}

/// Runs `act` on a new state with each allocation failing. What throws must leave the state as `look` saw it before.
template <typename Make, typename Act, typename Look>
void FailEachAllocation(const Make& make, const Act& act, const Look& look) {
  {
    auto state = make();
    act(state);  // what is made once for the process is there from now on
  }
  const std::ptrdiff_t live = LiveBlocks();
  ForEachAllocation([&](std::size_t number) {
    auto state = make();
    const auto before = look(state);
    const auto [failed, thrown] = RunWithFailure(number, [&] { act(state); });
    EXPECT_EQ(thrown, failed);
    EXPECT_TRUE(!thrown || look(state) == before);
    return failed;
  });
  EXPECT_EQ(LiveBlocks(), live);
}

struct Texts {
  std::wstring wide = L"a \"text\" of many units, too long for a string's own room; a text of many units \u00E9";
  std::string narrow = "bytes of some length, too many for a string's own room; \xC3\xA9";
  bool operator==(const Texts&) const = default;
};

const std::wstring kLong(200, L'x');

TEST(OutOfMemory, TextsStayUnchanged) {
  const struct {
    const char* name;
    std::function<void(Texts&)> act;
  } cases[] = {
      {"Utf16ToUtf8 long", [](Texts& texts) { StringUtilities::Utf16ToUtf8(kLong, texts.narrow); }},
      {"Utf8ToUtf16", [](Texts& texts) { StringUtilities::Utf8ToUtf16(std::string(300, 'y'), texts.wide); }},
      {"ToAscii", [](Texts& texts) { texts.narrow = StringUtilities::ToAscii(texts.wide); }},
      {"AddAtEndIfNotExists", [](Texts& texts) { StringUtilities::AddAtEndIfNotExists(texts.wide, kLong); }},
      {"Replace", [](Texts& texts) { StringUtilities::Replace(texts.wide, L"text", kLong); }},
      {"Replace itself", [](Texts& texts) { StringUtilities::Replace(texts.wide, L"many", texts.wide); }},
      {"ReplaceAll", [](Texts& texts) { StringUtilities::ReplaceAll(texts.wide, L"text", kLong); }},
      {"ReplaceAtBegin", [](Texts& texts) { StringUtilities::ReplaceAtBegin(texts.wide, L"a \"text", kLong); }},
      {"ReplaceAtEnd", [](Texts& texts) { StringUtilities::ReplaceAtEnd(texts.wide, L"\u00E9", kLong); }},
      {"GetBuffer", [](Texts& texts) { StringUtilities::GetBuffer(texts.wide, 500); }},
      {"Split", [](Texts& texts) { EXPECT_EQ(StringUtilities::Split(texts.wide, L" ").size(), 18U); }},
      {"SafeSprintf",
       [](Texts& texts) { texts.wide = StringUtilities::SafeSprintf(L"%s %100d %f", texts.wide.c_str(), 1, 1e300); }},
      {"FormatMessageW",
       [](Texts& texts) { texts.wide = StringUtilities::FormatMessageW(L"%1 %2!100d!", texts.wide.c_str(), 1); }},
      {"Base64::Encode", [](Texts& texts) { texts.wide = Base64::Encode(texts.wide); }},
      {"Base64::Decode", [](Texts& texts) { texts.wide = Base64::Decode(std::wstring(400, L'Q')); }},
      {"UrlEncoding::Encode", [](Texts& texts) { texts.wide = UrlEncoding::Encode(texts.wide, UrlPart::Query); }},
      {"ToEscapedString", [](Texts& texts) { texts.wide = JsonEncoder::ToEscapedString(texts.wide); }},
      {"FromEscapedString", [](Texts& texts) { texts.wide = JsonEncoder::FromEscapedString(texts.wide + L"\\n"); }},
      {"WildcardPattern",
       [](Texts& texts) { EXPECT_TRUE(WildcardPattern(L"*" + kLong + L"*").Match(texts.wide + kLong)); }},
      {"ConversionException",
       [](Texts& texts) {
         texts.narrow =
             ConversionException("m", texts.wide, ConversionEncoding::Utf16, ConversionEncoding::Utf8).what();
       }},
      {"Win32Exception",
       [](Texts& texts) { texts.narrow = Win32Exception("cannot do what was to be done", 1234).what(); }},
      {"FileSystemException",
       [](Texts& texts) {
         texts.narrow = FileSystemException("cannot open", L"/a/path/of/some/length", L"/b", 5).what();
       }},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    FailEachAllocation([] { return Texts(); }, test.act, [](const Texts& texts) { return texts; });
  }
}

TEST(OutOfMemory, AReportIsLostAndNothingElse) {
  ForEachAllocation([](std::size_t number) {
    std::size_t heard = 0;
    Diagnostics::SetSink([&heard](const std::wstring& report) { heard += std::wstring(report + L"!").size(); });
    const auto [failed, thrown] = RunWithFailure(number, [] { Diagnostics::Report(kLong); });
    EXPECT_FALSE(thrown);
    EXPECT_EQ(heard, failed ? 0 : kLong.size() + 1);
    Diagnostics::SetSink({});
    return failed;
  });
}

const std::wstring kDocument =
    L"{\"array\":[\"one\",\"two\"],\"escaped\":\"a \\\"quoted\\\" text that is not short at all\",\"number\":12,"
    L"\"objects\":[{\"a\":1},{\"b\":{\"c\":[true,false]}}],\"text\":\"text of a length above a string's own room\"}";

std::shared_ptr<DataObject> Document() {
  return JsonReader::Decode(kDocument, false);
}

std::wstring Written(const std::shared_ptr<DataObject>& document) {
  return document ? JsonWriter::Encode(*document) : L"none";
}

TEST(OutOfMemory, DocumentsAreReadAndWrittenOrNot) {
  FailEachAllocation([] { return std::shared_ptr<DataObject>(); },
                     [](std::shared_ptr<DataObject>& document) { document = JsonReader::Decode(kDocument, false); },
                     Written);
  std::wstring written;
  FailEachAllocation(
      Document, [&](const auto& document) { written = JsonWriter::Encode(*document); }, Written);
  EXPECT_EQ(written, kDocument);
}

TEST(OutOfMemory, DocumentsStayUnchanged) {
  using Pointer = std::shared_ptr<DataObject>;
  const struct {
    const char* name;
    std::function<void(Pointer&)> act;
  } cases[] = {
      {"set", [](Pointer& document) { document->SetValue(L"text", kLong); }},
      {"set a number", [](Pointer& document) { document->SetUint64Value(L"array", 18446744073709551615U); }},
      {"set an object", [](Pointer& document) { document->SetObject(L"text", std::make_shared<DataObject>()); }},
      {"set objects",
       [](Pointer& document) {
         document->SetObjectArray(L"text", {Document(), Document()});
       }},
      {"add a text", [](Pointer& document) { document->GetValue(L"array").AddStringValue(kLong); }},
      {"add an object", [](Pointer& document) { document->GetValue(L"objects").AddObject(Document()); }},
      {"add an object to texts", [](Pointer& document) { document->GetValue(L"array").AddObject(Document()); }},
      {"insert", [](Pointer& document) { document->GetValue(kLong); }},
      {"assign", [](Pointer& document) { *document = *JsonReader::Decode(L"{\"z\":\"other\"}", false); }},
      {"copy", [](Pointer& document) { EXPECT_EQ(Written(std::make_shared<DataObject>(*document)), kDocument); }},
      {"copy a value", [](Pointer& document) { document->GetValue(L"text") = document->GetValue(L"array"); }},
      {"move a value",
       [](Pointer& document) { document->GetValue(L"text") = std::move(document->GetValue(L"array")); }},
      {"strings", [](Pointer& document) { EXPECT_EQ(document->GetValue(L"array").GetStringArray().size(), 2U); }},
      {"string", [](Pointer& document) { EXPECT_FALSE(document->GetValue(L"text").GetString().empty()); }},
      {"objects", [](Pointer& document) { EXPECT_EQ(document->GetObjectArray(L"objects").size(), 2U); }},
      {"object", [](Pointer& document) { EXPECT_TRUE(document->GetObjectArray(L"objects")[1]->GetDataObject(L"b")); }},
      {"iterate",
       [](Pointer& document) {
         for (const auto& [key, value] : *document) {
           EXPECT_EQ(value.IsNullValue(), key.empty());
         }
       }},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    FailEachAllocation(Document, test.act, Written);
  }
}

// A key that is not there is inserted first, and may stay as a null.
TEST(OutOfMemory, ANewPropertyIsThereOrNullOrNot) {
  FailEachAllocation(
      Document, [](const auto& document) { document->SetValue(L"new", kLong); },
      [](const auto& document) {
        const bool is_null = document->Contains(L"new") && document->IsNullValue(L"new");
        return is_null ? kDocument : Written(document);
      });
}

TEST(OutOfMemory, LexersAreCopiedOrNot) {
  Json::Lexer lexer;
  lexer.SetReadLine([text = kDocument](std::wstring& line) mutable {
    line = text;
    return !std::exchange(text, L"").empty();
  });
  lexer.GetChar(L'{');
  FailEachAllocation([] { return std::optional<Json::Lexer>(); },
                     [&lexer](std::optional<Json::Lexer>& copy) { copy = lexer; },
                     [](const std::optional<Json::Lexer>& copy) { return copy.has_value(); });
  // One that has a line of its own keeps it.
  const auto other = [] {
    Json::Lexer made;
    made.SetReadLine([](std::wstring& line) {
      line = L"{" + std::wstring(1000, L'x');
      return true;
    });
    made.GetChar(L'{');
    return made;
  };
  FailEachAllocation(
      other, [&lexer](Json::Lexer& copy) { copy = lexer; }, [](Json::Lexer copy) { return copy.GetStringUntil(L'y'); });
}

// A stream swallows what its buffer throws, and says so.
TEST(OutOfMemory, AStreamThatFailsIsLeftToItsOwner) {
  const auto document = Document();
  ForEachAllocation([&document](std::size_t number) {
    std::wostringstream stream;
    const auto [failed, thrown] = RunWithFailure(number, [&] { JsonWriter(stream).Write(*document); });
    EXPECT_EQ(failed, thrown || stream.bad());
    EXPECT_TRUE(failed || stream.str() == kDocument);
    return failed;
  });
}

TEST(OutOfMemory, ALogKeepsItsBackups) {
  const Testing::DiagnosticsRecorder lost_lines;
  ForEachAllocation([](std::size_t number) {
    const Testing::TempFolder folder;
    Testing::WriteFile(folder / L"agent.log", "a");
    Testing::WriteFile(folder / L"agent_1.log", "b");
    Testing::WriteFile(folder / L"agent_2.log", "c");
    FileAppender log(folder / L"agent.log");
    log.SetMaxFileSize(-1);
    const auto append = [&log] {
      try {
        log.AppendLine(L"x");
      } catch (const FileSystemException&) {
      }
    };
    const bool failed = RunWithFailure(number, append).failed;
    std::string kept;
    for (const wchar_t* name : {L"agent.log", L"agent_1.log", L"agent_2.log", L"agent_3.log"}) {
      kept += Testing::ReadFile(folder / name);
    }
    std::erase_if(kept, [](char c) { return c < 'a' || c > 'c'; });
    EXPECT_EQ(kept, "abc");
    return failed;
  });
}

TEST(OutOfMemory, AWriteThatNobodyWaitsForIsRefusedAndTheOthersAreSent) {
  const std::wstring message(50000, L'd');
  const BareServerAndClient pair;
  int written = 0;
  const auto write = [&] {
    pair.client->WriteMessage(message, false).get();  // all but a few stay pending
    ++written;
  };
  while (written < 24) {
    write();
  }
  {
    const Testing::NoMemoryElsewhere none;
    const auto write_on = [&] {
      while (written < 100) {
        write();
      }
    };
    ExpectWin32Failure(write_on, "Error writing to named pipe", Platform::kNotEnoughMemory);
  }
  for (int i = 0; i < written; ++i) {
    ASSERT_EQ(Read(pair.server).text.size(), message.size());
  }
}

}  // namespace
}  // namespace Zelto::Utilities
