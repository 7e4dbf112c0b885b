#pragma once
// Bounded text copies into the fixed fields of the document records. The
// library's own: not installed, not exported.
#include <cstddef>

namespace txml {
// Copies src into dst[size] and always terminates; a cut never splits a UTF-8
// sequence. Returns false when the text had to be cut. Null src gives "".
bool copyText(char* dst, std::size_t size, const char* src);
bool copyText(char* dst, std::size_t size, const char* src, std::size_t length);
// Appends like copyText; returns false when cut.
bool appendText(char* dst, std::size_t size, const char* src);
// Length of the longest prefix of text[0..length) that fits in limit bytes
// without splitting a UTF-8 sequence.
std::size_t utf8Fit(const char* text, std::size_t length, std::size_t limit);
}  // namespace txml
