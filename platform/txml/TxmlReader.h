#pragma once
// The reader behind CTXMLRoot::parse, CTXMLQws::parse and CTXMLEvent::parse.
#include <cstddef>

class CTXML;
class CTXMLRoot;

namespace txml {
// Parses into doc; root, when given, also receives softkeys, flyouts, line
// keys, list menus, translations and the status mask. Returns false and
// leaves doc reset (flags 0, error set) when the bytes are not a document.
bool readDocument(const char* data, std::size_t length, CTXML& doc, CTXMLRoot* root);
}  // namespace txml
