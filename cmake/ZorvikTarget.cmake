# zorvik_settings(NAME): what every target of the project is compiled with.
# zorvik_library(NAME SHORT COMPONENT sources...): a library of the package, static or shared as
# BUILD_SHARED_LIBS says, known as zorvik::SHORT here and where it is installed; COMPONENT names the
# package component it belongs to.
include(GNUInstallDirs)

set(ZORVIK_INCLUDE_FOLDER "${CMAKE_INSTALL_INCLUDEDIR}/zorvik-checkout")
if(BUILD_SHARED_LIBS)
  set(ZORVIK_LIBRARY_KIND shared)
else()
  set(ZORVIK_LIBRARY_KIND static)
endif()
find_program(ZORVIK_CCACHE ccache)

function(zorvik_settings target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(ZORVIK_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(ZORVIK_SANITIZE)
    # No check of virtual tables: it stops inside the web engine's own library.
    target_compile_options(${target} PRIVATE -fsanitize=${ZORVIK_SANITIZE} -fno-sanitize=vptr
                                             -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=${ZORVIK_SANITIZE})
  endif()
  if(ZORVIK_CCACHE)
    set_target_properties(${target} PROPERTIES CXX_COMPILER_LAUNCHER "${ZORVIK_CCACHE}")
  endif()
endfunction()

function(zorvik_library target short component)
  add_library(${target} ${ARGN})
  add_library(zorvik::${short} ALIAS ${target})
  zorvik_settings(${target})
  target_include_directories(${target} INTERFACE "$<INSTALL_INTERFACE:${ZORVIK_INCLUDE_FOLDER}>")
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${short}
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    INSTALL_RPATH "$ORIGIN"  # one library finds the others of its prefix
    DEFINE_SYMBOL ""  # a static and a shared build compile alike, so a compiler cache serves both
    VERSION "${PROJECT_VERSION}"
    SOVERSION "${PROJECT_VERSION_MAJOR}")
  if(BUILD_SHARED_LIBS)
    # Keeps instances of the standard library's templates out of the exported symbols.
    set(map "${PROJECT_SOURCE_DIR}/cmake/exports.map")
    target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}")
  endif()
  zorvik_install_target(${target} ${component})
endfunction()

function(zorvik_install_target target component)
  if(NOT ZORVIK_INSTALL)
    return()
  endif()
  set(package runtime)
  if(component STREQUAL "gtk_port")
    set(package runtime_gtk)
  elseif(component STREQUAL "qt_port")
    set(package runtime_qt)
  endif()
  install(TARGETS ${target} EXPORT zorvik_checkout_${component}
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${package} NAMELINK_COMPONENT development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
    OBJECTS DESTINATION "${CMAKE_INSTALL_LIBDIR}/zorvik-checkout" COMPONENT development)
endfunction()

# Sets ZORVIK_HAS_GTK_PORT and the imported targets PkgConfig::WEBKITGTK and PkgConfig::GTK4.
function(zorvik_find_webkitgtk)
  set(has_gtk_port FALSE)
  if(ZORVIK_GTK_PORT STREQUAL "OFF")
    message(STATUS "Left out: the GTK port (ZORVIK_GTK_PORT is OFF)")
  else()
    find_package(PkgConfig QUIET)
    if(PkgConfig_FOUND)
      pkg_check_modules(WEBKITGTK QUIET IMPORTED_TARGET GLOBAL webkitgtk-6.0)
      pkg_check_modules(GTK4 QUIET IMPORTED_TARGET GLOBAL gtk4)
    endif()
    if(WEBKITGTK_FOUND)
      set(has_gtk_port TRUE)
    elseif(ZORVIK_GTK_PORT STREQUAL "ON")
      message(FATAL_ERROR "ZORVIK_GTK_PORT is ON, but WebKitGTK 6.0 was not found (libwebkitgtk-6.0-dev)")
    else()
      message(STATUS "Left out: the GTK port (WebKitGTK 6.0 was not found)")
    endif()
  endif()
  set(ZORVIK_HAS_GTK_PORT ${has_gtk_port} PARENT_SCOPE)
endfunction()

# Sets ZORVIK_HAS_QT_PORT and finds Qt6::Widgets and Qt6::WebEngineWidgets. A macro, because the
# package's targets belong to the folder that finds them.
macro(zorvik_find_qt)
  set(ZORVIK_HAS_QT_PORT FALSE)
  if(ZORVIK_QT_PORT STREQUAL "OFF")
    message(STATUS "Left out: the Qt port (ZORVIK_QT_PORT is OFF)")
  else()
    find_package(Qt6 6.4 QUIET COMPONENTS WebEngineWidgets)
    if(Qt6WebEngineWidgets_FOUND)
      set(ZORVIK_HAS_QT_PORT TRUE)
    elseif(ZORVIK_QT_PORT STREQUAL "ON")
      message(FATAL_ERROR "ZORVIK_QT_PORT is ON, but Qt WebEngine 6.4 was not found (qt6-webengine-dev)")
    else()
      message(STATUS "Left out: the Qt port (Qt WebEngine 6.4 was not found)")
    endif()
  endif()
endmacro()
