/// @file
/// What the service and the agent both have to know of a document: whether it may be forwarded.
#pragma once

#include <zelto/json/data_object.h>

#include <memory>
#include <string>

/// A decoded document, or the reason why it is refused.
struct CheckedDocument {
  std::shared_ptr<Zelto::Json::DataObject> object;  ///< empty when refused
  std::string reason;                               ///< English; empty when accepted
};

/// Decodes a document and refuses what must not be passed on: broken text, a repeated key, an array of mixed kinds (its
/// items are written as their bare texts, so a hostile one could gain members on the way).
CheckedDocument CheckDocument(const std::wstring& text);
