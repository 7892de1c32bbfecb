# Fails unless DOCUMENT quotes the file SOURCE word for word.
file(READ "${DOCUMENT}" document)
file(READ "${SOURCE}" source)
string(FIND "${document}" "```cpp\n${source}```" place)
if(place EQUAL -1)
  message(FATAL_ERROR "${DOCUMENT} does not quote ${SOURCE} as it is")
endif()
