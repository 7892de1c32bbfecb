# What `cmake --install` puts where: headers under a folder of their own, libraries, the CMake
# package, pkg-config files. A static and a shared build may be installed into one prefix.
include(CMakePackageConfigHelpers)

foreach(folder platform/foundation platform/runtime platform/services platform/uikit platform/webkit
    platform/headless core core/development zorvik_mobile_kit_ios_webview_sdk testkit trace)
  file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.h")
  # These are the platform's own.
  list(FILTER headers EXCLUDE REGEX "/(URIReference|Animation|LinearSystem)\\.h$")
  install(FILES ${headers} DESTINATION "${ZORVIK_INCLUDE_FOLDER}/${folder}" COMPONENT development)
endforeach()

install(FILES "${PROJECT_SOURCE_DIR}/c/zorvik_checkout.h"
  DESTINATION "${ZORVIK_INCLUDE_FOLDER}/c" COMPONENT development)

set(components checkout core_development headless_port testkit trace)
if(ZORVIK_HAS_GTK_PORT)
  install(FILES "${PROJECT_SOURCE_DIR}/platform/gtk/GtkPlatform.h"
    DESTINATION "${ZORVIK_INCLUDE_FOLDER}/platform/gtk" COMPONENT development)
  list(APPEND components gtk_port)
endif()
if(ZORVIK_HAS_QT_PORT)
  install(FILES "${PROJECT_SOURCE_DIR}/platform/qt/QtPlatform.h"
    DESTINATION "${ZORVIK_INCLUDE_FOLDER}/platform/qt" COMPONENT development)
  list(APPEND components qt_port)
endif()
if(ZORVIK_HAS_GTK_PORT OR ZORVIK_HAS_QT_PORT)
  install(FILES "${PROJECT_SOURCE_DIR}/platform/desktop/PageData.h"
    "${PROJECT_SOURCE_DIR}/platform/desktop/PlatformOptions.h"
    DESTINATION "${ZORVIK_INCLUDE_FOLDER}/platform/desktop" COMPONENT development)
endif()
if(TARGET zorvik_port_contract)
  install(FILES "${PROJECT_SOURCE_DIR}/tests/contract/PortUnderTest.h"
    DESTINATION "${ZORVIK_INCLUDE_FOLDER}/tests/contract" COMPONENT development)
  list(APPEND components port_contract)
endif()

# The CMake package: one file of targets for each component and kind of library.
set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/zorvik_checkout")
foreach(component IN LISTS components)
  install(EXPORT zorvik_checkout_${component} NAMESPACE zorvik::
    FILE zorvik_checkout-${component}-${ZORVIK_LIBRARY_KIND}.cmake
    DESTINATION "${package_folder}" COMPONENT development)
endforeach()
# The C interface is of its own kind, whatever the rest of this build is.
foreach(target zorvik_c zorvik_c_static zorvik_c_gtk)
  if(NOT TARGET ${target})
    continue()
  endif()
  get_target_property(component ${target} EXPORT_NAME)
  set(kind shared)
  if(component STREQUAL "c_static")
    set(kind static)
  endif()
  set(package runtime)
  if(component STREQUAL "c_gtk")
    set(package runtime_gtk)
  endif()
  install(TARGETS ${target} EXPORT zorvik_checkout_${component}
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${package} NAMELINK_COMPONENT development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
  install(EXPORT zorvik_checkout_${component} NAMESPACE zorvik::
    FILE zorvik_checkout-${component}-${kind}.cmake
    DESTINATION "${package_folder}" COMPONENT development)
endforeach()
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/zorvik_checkout-config.cmake.in"
  "${PROJECT_BINARY_DIR}/zorvik_checkout-config.cmake" INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/zorvik_checkout-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/zorvik_checkout-config.cmake"
  "${PROJECT_BINARY_DIR}/zorvik_checkout-config-version.cmake"
  DESTINATION "${package_folder}" COMPONENT development)

# The pkg-config files, the same for both kinds of library. --gc-sections: see zorvik_checkout.
file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/core_contract_symbols.txt" symbols REGEX "^_Z")
list(TRANSFORM symbols PREPEND "-Wl,--undefined=")
list(JOIN symbols " " contract_symbols)
file(RELATIVE_PATH prefix_from_here "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" /)
function(zorvik_pkg_config name description requires libs)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/zorvik.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endfunction()
zorvik_pkg_config(zorvik_platform "The layer the checkout component stands on" ""
  "-lzorvik_platform -pthread")
zorvik_pkg_config(zorvik_checkout "${PROJECT_DESCRIPTION}" "zorvik_platform"
  "-Wl,--gc-sections ${contract_symbols} -lzorvik_checkout")
zorvik_pkg_config(zorvik_core_development "Core services for development and tests"
  "zorvik_platform" "-lzorvik_core_development")
zorvik_pkg_config(zorvik_headless_port "The port with a virtual clock and a scripted page"
  "zorvik_platform" "-lzorvik_headless_port")
zorvik_pkg_config(zorvik_trace "Records a checkout and writes it as a page" "zorvik_platform"
  "-lzorvik_trace")
zorvik_pkg_config(zorvik_testkit "A checkout page, a customer and core services for tests of hosts"
  "zorvik_checkout zorvik_headless_port zorvik_trace" "-lzorvik_testkit")
if(ZORVIK_HAS_GTK_PORT)
  zorvik_pkg_config(zorvik_gtk_port "The port on GTK 4 and WebKitGTK 6.0"
    "zorvik_platform gtk4 webkitgtk-6.0" "-lzorvik_gtk_port")
endif()
if(ZORVIK_HAS_QT_PORT)
  zorvik_pkg_config(zorvik_qt_port "The port on Qt 6 Widgets and Qt WebEngine"
    "zorvik_platform Qt6Widgets Qt6WebEngineWidgets gio-2.0" "-lzorvik_qt_port")
endif()

set(LIBS_PRIVATE "-lstdc++ -lm -pthread")
zorvik_pkg_config(zorvik_c "${PROJECT_DESCRIPTION}: its C interface and the headless port" ""
  "-lzorvik_c")
set(LIBS_PRIVATE "")
if(ZORVIK_HAS_GTK_PORT)
  zorvik_pkg_config(zorvik_c_gtk "The same C interface with the GTK port, in place of zorvik_c" ""
    "-lzorvik_c_gtk")
endif()

# Debian packages, made of a static and a shared build: scripts/package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zorvik-checkout)
string(REPLACE "-" "~" CPACK_PACKAGE_VERSION "${ZORVIK_VERSION}")
set(CPACK_PACKAGE_CONTACT "The makers of the checkout component <checkout@zorvik.example>")
set(CPACK_PACKAGE_VENDOR Zorvik)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_COMPONENTS_ALL runtime runtime_gtk development)
if(ZORVIK_HAS_QT_PORT)
  list(APPEND CPACK_COMPONENTS_ALL runtime_qt)
endif()
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzorvik-checkout${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_GTK_PACKAGE_NAME libzorvik-checkout-gtk${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_QT_PACKAGE_NAME libzorvik-checkout-qt${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzorvik-checkout-dev)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Shared libraries of the checkout component.")
set(CPACK_COMPONENT_RUNTIME_GTK_DESCRIPTION "The checkout component's port on GTK 4 and WebKitGTK.")
set(CPACK_COMPONENT_RUNTIME_QT_DESCRIPTION "The checkout component's port on Qt 6 and Qt WebEngine.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers and libraries to build with the component.")
foreach(port GTK QT)
  set(CPACK_DEBIAN_RUNTIME_${port}_PACKAGE_DEPENDS
    "libzorvik-checkout${PROJECT_VERSION_MAJOR} (= ${CPACK_PACKAGE_VERSION})")
endforeach()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "libzorvik-checkout${PROJECT_VERSION_MAJOR} (= ${CPACK_PACKAGE_VERSION})")
# A host on the headless port needs no web engine.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS
  "libzorvik-checkout-gtk${PROJECT_VERSION_MAJOR} (= ${CPACK_PACKAGE_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libwebkitgtk-6.0-dev, qt6-webengine-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/platform"
  "${PROJECT_BINARY_DIR}/platform/headless" "${PROJECT_BINARY_DIR}/core" "${PROJECT_BINARY_DIR}/trace"
  "${PROJECT_BINARY_DIR}/zorvik_mobile_kit_ios_webview_sdk")
if(ZORVIK_PACKAGED_WITH)
  # A second build tree whose libraries of the other kind go into the same packages.
  set(CPACK_INSTALL_CMAKE_PROJECTS "${ZORVIK_PACKAGED_WITH};zorvik_checkout;ALL;/"
    "${PROJECT_BINARY_DIR};zorvik_checkout;ALL;/")
endif()
include(CPack)
