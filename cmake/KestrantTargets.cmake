# Compiler settings shared by every target, and kestrant_library(), which gives each folder of src/ its own static
# library and its own include root: a folder sees only the headers of the libraries it links.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# The settings let ccache serve objects that were built with a precompiled header.
find_program(KESTRANT_CCACHE ccache)
if(KESTRANT_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros ${KESTRANT_CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()
find_program(KESTRANT_MOLD mold)
if(KESTRANT_MOLD)
  add_link_options(-fuse-ld=mold)
endif()

add_compile_definitions(QT_NO_KEYWORDS QT_NO_CAST_FROM_BYTEARRAY QT_DISABLE_DEPRECATED_BEFORE=0x060400)
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow "$<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>"
                    "$<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>" -Wno-missing-field-initializers)
if(KESTRANT_WARNINGS_AS_ERRORS)
  # GCC 12 takes the values of optionals for uninitialised where they are not; that stays a warning.
  add_compile_options(-Werror -Wno-error=maybe-uninitialized)
endif()
# Distributors' packages are built with it; resolving every symbol at the start costs a few milliseconds.
option(KESTRANT_HARDENING "Harden the program as distributors do: all symbols bound at the start, checked library calls" OFF)
if(KESTRANT_HARDENING)
  add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>" -fstack-protector-strong)
  add_link_options(-Wl,-z,relro,-z,now)
endif()
if(KESTRANT_SANITIZE)
  add_compile_options(-fsanitize=${KESTRANT_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KESTRANT_SANITIZE})
  # The instrumentation hides from GCC that optionals inside expected values are initialised.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
endif()

# Precompiled headers, one set for libraries and one for tests, each built once and used by all targets of its kind. They hold
# only headers that most files include anyway; a file still includes what it uses, so that it compiles without them, too.
option(KESTRANT_PRECOMPILED_HEADERS "Precompile the headers that most files include" ON)
# Programs and libraries share the sets, so both are compiled as position-independent code of one kind.
add_compile_options(-fPIC)

function(kestrant_precompiled_headers name)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINK" ${ARGN})
  if(KESTRANT_PRECOMPILED_HEADERS)
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${PROJECT_BINARY_DIR}/${name}.cpp)
    target_link_libraries(${name} PRIVATE ${ARG_LINK})
    target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
  endif()
endfunction()

function(kestrant_use_precompiled_headers target name)
  if(KESTRANT_PRECOMPILED_HEADERS)
    target_precompile_headers(${target} REUSE_FROM ${name})
  endif()
endfunction()

set(KESTRANT_COMMON_HEADERS
  <algorithm> <array> <chrono> <functional> <map> <memory> <optional> <string> <utility> <vector> <tl/expected.hpp>
  <QByteArray> <QDate> <QDateTime> <QDir> <QFile> <QHash> <QJsonArray> <QJsonDocument> <QJsonObject> <QLocale> <QObject>
  <QPointer> <QSet> <QString> <QStringList> <QTimeZone> <QVariant>)

# The include roots hold one link each, to the folder they stand for. They are shared by all build trees, so that a
# compiler cache recognises the same file in each of them.
set(KESTRANT_INCLUDE_ROOT ${PROJECT_SOURCE_DIR}/build/include)

# kestrant_library(<folder> [SOURCES ...] [LINK ...])
# Static library kestrant_<name> for src/<folder> (slashes become underscores). Headers are included as
# "<folder>/Name.h" by whoever links the library.
function(kestrant_library folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  string(REPLACE "/" "_" name ${folder})
  set(target kestrant_${name})
  add_library(${target} STATIC ${ARG_SOURCES})
  set(root ${KESTRANT_INCLUDE_ROOT}/${name})
  get_filename_component(parent ${root}/${folder} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  if(NOT EXISTS ${root}/${folder})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${folder} ${root}/${folder} SYMBOLIC)
  endif()
  target_include_directories(${target} PUBLIC ${root})
  target_link_libraries(${target} PUBLIC ${ARG_LINK} PRIVATE ${ARG_PRIVATE_LINK})
  kestrant_use_precompiled_headers(${target} kestrant_library_headers)
endfunction()

# kestrant_test(<name> [AS_ONE] SOURCES ... LINK ... [LABELS ...])
# GoogleTest program <name>. CTest knows each of its tests by name; with AS_ONE, where they share a service that takes long
# to start, only the program.
function(kestrant_test name)
  cmake_parse_arguments(ARG "AS_ONE" "" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINK} kestrant_test_support GTest::gmock)
  kestrant_use_precompiled_headers(${name} kestrant_test_headers)
  if(ARG_AS_ONE)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 300 LABELS "${ARG_LABELS}")
  else()
    gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300)
  endif()
endfunction()

# Where the parts that are loaded when they are wanted are installed, from the prefix.
include(GNUInstallDirs)
set(KESTRANT_MODULE_FOLDER ${CMAKE_INSTALL_LIBDIR}/kestrant)

# kestrant_module(<name> SOURCES ... LINK ... [INSTALL ...])
# A part of the program, <name>.so, that is loaded when it is wanted, so that the program starts without the libraries behind
# it. It is built beside the program.
function(kestrant_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;INSTALL" ${ARGN})
  add_library(${name} MODULE ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINK})
  target_link_options(${name} PRIVATE -Wl,--exclude-libs,ALL)
  set_target_properties(${name} PROPERTIES
    PREFIX "" CXX_VISIBILITY_PRESET hidden LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/src/app)
  install(TARGETS ${name} LIBRARY DESTINATION ${KESTRANT_MODULE_FOLDER} ${ARG_INSTALL})
endfunction()
