# Writes OUTPUT: the page's files in PAGE as strings of the library. Run by the build.
file(READ "${PAGE}/trace.html" html)
file(READ "${PAGE}/trace.css" style)
set(script "")
foreach(name IN ITEMS model parts arrows trace)
  file(READ "${PAGE}/${name}.js" part)
  string(APPEND script "${part}")
endforeach()
file(WRITE "${OUTPUT}" "#include \"trace/writer/Page.h\"

namespace zorvik::trace {

const char* const pageHtml = R\"zorvikpage(${html})zorvikpage\";
const char* const pageStyle = R\"zorvikpage(${style})zorvikpage\";
const char* const pageScript = R\"zorvikpage(${script})zorvikpage\";

}  // namespace zorvik::trace
")
