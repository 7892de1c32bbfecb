# Installs what the build tree BUILD holds and builds the template port on that alone, as somebody
# outside this tree would: cmake -D BUILD=... -D SOURCE=... -D COMPILER=... -D LAUNCHER=... -P FILE
set(work "${BUILD}/installed_template")
file(REMOVE_RECURSE "${work}")
file(COPY "${SOURCE}/" DESTINATION "${work}/source")
foreach(command IN ITEMS
    "${CMAKE_COMMAND}|--install|${BUILD}|--component|development|--prefix|${work}/prefix"
    "${CMAKE_COMMAND}|-G|Ninja|-S|${work}/source|-B|${work}/build|-DCMAKE_PREFIX_PATH=${work}/prefix|-DCMAKE_CXX_COMPILER=${COMPILER}|-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}"
    "${CMAKE_COMMAND}|--build|${work}/build|-j2"
    "${CMAKE_CTEST_COMMAND}|--test-dir|${work}/build|--output-on-failure|--no-tests=error")
  string(REPLACE "|" ";" command "${command}")
  execute_process(COMMAND ${command} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
