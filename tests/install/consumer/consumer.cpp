#include <zelto/zelto.h>

#include <iostream>

using namespace Zelto::Utilities;

// Constants that callers pass by reference, to std::min or to a test, must be found in the library.
const void* volatile constants[] = {
    &ActiveNamedPipeServerConnection::RESPONSE_TIMEOUT,
    &AsyncNamedPipeClient::DEFAULT_TIMEOUT,
    &AsyncNamedPipeClient::MAX_ATTEMPTS_COUNT,
    &AsyncNamedPipeClient::MAX_MESSAGE_SIZE,
    &FileAppender::noBackupFileLimit,
    &FileAppender::noFileSizeLimit,
    &MultiClientNamedPipeServer::LISTENING_INSTANCES,
    &ThreadPool::MAXIMUM_LOOP_WAIT_INTERVAL,
    &ThreadPool::MAXIMUM_WAIT_ATTEMPTS_BEFORE_CLOSE,
    &ThreadPool::WAIT_INTERVAL_BETWEEN_ATTEMPTS_TO_CLOSE,
    &TimeUnitConverter::TICKS_PER_DAY,
    &TimeUnitConverter::TICKS_PER_HOUR,
    &TimeUnitConverter::TICKS_PER_MICROSECOND,
    &TimeUnitConverter::TICKS_PER_MILLISECOND,
    &TimeUnitConverter::TICKS_PER_MINUTE,
    &TimeUnitConverter::TICKS_PER_SECOND,
    &Zelto::Json::JsonReader::MAXIMUM_NESTING,
};

// Fails when the installed headers, library or options do not fit together. Prints the library's version.
int main() {
  const SharedHandle event = EventAccessControl::CreateLocalEvent();
  EventAccessControl::SetEvent(event);
  const bool signalled = Zelto::Platform::WaitForEvent(event, 0) == 0;

  const auto document = Zelto::Json::JsonReader::Decode(L"{\"port\": 4812}", false);
  const auto absent = document->GetDataObject(L"proxy");
  const bool read = absent->GetIntValue(L"port", 80) == 80 && absent == nullptr;

  bool caught = false;
  try {
    EventAccessControl::SetEvent(SharedHandle());
  } catch (const Win32Exception& error) {  // thrown by the library, caught by its name here
    caught = error.GetErrorCode() == 6;
  }

  // What a static library needs besides itself shows when these are linked.
  const auto server = MultiClientNamedPipeServer::Create(L"zelto-consumer", {}, NamedPipeMessageEncoding::Utf8, 0, 0,
                                                         false, [](unsigned) {});
  bool refused = false;
  try {
    const CurlWrapper session(L"no such folder", false, L"", L"", false, 1, 1);
  } catch (const Win32Exception& error) {
    refused = error.GetErrorCode() == 126;
  }

  std::cout << LibraryVersion::Get().ToCharString();
  return signalled && read && caught && server && refused && LibraryVersion::Get() == LibraryVersion::GetOfHeaders()
             ? 0
             : 1;
}
