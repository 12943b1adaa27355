# Helpers shared by every folder: one library target a folder, one way to add a program or a test.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Every target is compiled alike: includes are written from the root of the tree.
add_library(vek_flags INTERFACE)
target_include_directories(vek_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(vek_flags INTERFACE -Wall -Wextra -Wpedantic)
target_compile_definitions(vek_flags INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_DEPRECATED_WARNINGS)
if(VEK_SANITIZE)
  target_compile_options(vek_flags INTERFACE
    -O1 -fno-omit-frame-pointer -fsanitize=address,undefined -fno-sanitize-recover=all)
  target_link_options(vek_flags INTERFACE -fsanitize=address,undefined)
endif()
if(VEK_FUZZ)
  target_compile_options(vek_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# vek_add_library(NAME Model [STATIC] SOURCES ... PUBLIC ... PRIVATE ...): target vek_model, alias
# Vek::Model. A library that is not installed is STATIC.
function(vek_add_library)
  cmake_parse_arguments(ARG "STATIC" "NAME" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  string(TOLOWER vek_${ARG_NAME} target)
  set(type "")
  if(ARG_STATIC)
    set(type STATIC)
  endif()
  add_library(${target} ${type} ${ARG_SOURCES})
  add_library(Vek::${ARG_NAME} ALIAS ${target})
  target_link_libraries(${target}
    PUBLIC ${ARG_PUBLIC} PRIVATE $<BUILD_INTERFACE:vek_flags> ${ARG_PRIVATE})
  target_include_directories(${target}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:include/vek>)
endfunction()

# vek_install_library(NAME Model [WIDGETS] HEADERS bits.h ...): the library, and those headers of the
# calling folder that hosts include. What else lies there is ours. The simulator is no host's business.
# WIDGETS: it needs a display, so the tools for scripts come without it.
function(vek_install_library)
  cmake_parse_arguments(ARG "WIDGETS" "NAME" "HEADERS" ${ARGN})
  string(TOLOWER vek_${ARG_NAME} target)
  set(component runtime)
  if(ARG_WIDGETS)
    set(component workbench)
  endif()
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${ARG_NAME} INSTALL_RPATH $ORIGIN)
  install(TARGETS ${target} EXPORT VekTargets
    LIBRARY DESTINATION lib COMPONENT ${component} NAMELINK_COMPONENT development
    ARCHIVE DESTINATION lib COMPONENT development)
  cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME folder)
  list(TRANSFORM ARG_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ OUTPUT_VARIABLE headers)
  install(FILES ${headers} DESTINATION include/vek/${folder} COMPONENT development)
  list(TRANSFORM ARG_HEADERS PREPEND ${folder}/ OUTPUT_VARIABLE headers)
  set_property(GLOBAL APPEND PROPERTY VEK_PUBLIC_HEADERS ${headers})
endfunction()

# vek_add_program(NAME veksh FOLDER Analyzer/bin SOURCES ... LIBS ...): the build tree mirrors the
# install root, since the programs find their siblings relative to themselves.
function(vek_add_program)
  cmake_parse_arguments(ARG "" "NAME;FOLDER" "SOURCES;LIBS" ${ARGN})
  add_executable(${ARG_NAME} ${ARG_SOURCES})
  target_link_libraries(${ARG_NAME} PRIVATE vek_flags ${ARG_LIBS})
  set_target_properties(${ARG_NAME} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${ARG_FOLDER}
    INSTALL_RPATH $ORIGIN/../../lib)
endfunction()

# vek_add_test(NAME tst_bits [TIMEOUT s] LIBS ...): builds NAME.cpp of the calling folder.
function(vek_add_test)
  cmake_parse_arguments(ARG "" "NAME;TIMEOUT" "SOURCES;LIBS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_executable(${ARG_NAME} ${ARG_NAME}.cpp ${ARG_SOURCES})
  target_link_libraries(${ARG_NAME} PRIVATE vek_flags Qt5::Test ${ARG_LIBS})
  target_compile_definitions(${ARG_NAME} PRIVATE VEK_BUILD_ROOT="${PROJECT_BINARY_DIR}"
    VEK_SOURCE_ROOT="${PROJECT_SOURCE_DIR}")
  # literals everywhere in tests: the conversion that the product forbids keeps them readable
  target_compile_options(${ARG_NAME} PRIVATE -UQT_NO_CAST_FROM_ASCII)
  add_test(NAME ${ARG_NAME} COMMAND ${ARG_NAME})
  set_tests_properties(${ARG_NAME} PROPERTIES TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/lsan.supp:print_suppressions=0")
endfunction()
