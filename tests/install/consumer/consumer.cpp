#include <zelto/zelto.h>

// Fails when the installed headers, library or options do not fit together.
int main() {
  const Zelto::Utilities::SharedHandle event = Zelto::Platform::CreateManualEvent();
  Zelto::Platform::SignalEvent(event);
  return Zelto::Platform::WaitForEvent(event, 0) == 0 ? 0 : 1;
}
