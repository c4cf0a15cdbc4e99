#include <zelto/zelto.h>

#include <iostream>

using namespace Zelto::Utilities;

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

  std::cout << LibraryVersion::Get().ToCharString();
  return signalled && read && caught && LibraryVersion::Get() == LibraryVersion::GetOfHeaders() ? 0 : 1;
}
