# Writes OUTPUT: the page's files in PAGE as strings of the library. Run by the build.
file(READ "${PAGE}/trace.html" html)
file(READ "${PAGE}/trace.css" style)
file(READ "${PAGE}/trace.js" script)
file(WRITE "${OUTPUT}" "#include \"trace/writer/Page.h\"

namespace zorvik::trace {

const char* const pageHtml = R\"zorvikpage(${html})zorvikpage\";
const char* const pageStyle = R\"zorvikpage(${style})zorvikpage\";
const char* const pageScript = R\"zorvikpage(${script})zorvikpage\";

}  // namespace zorvik::trace
")
