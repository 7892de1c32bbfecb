#pragma once

namespace zorvik::trace {

// The files of trace/page, put into the library when it is built.
extern const char* const pageHtml;
extern const char* const pageStyle;
extern const char* const pageScript;

}  // namespace zorvik::trace
