# The options of all targets of this project: warnings, sanitizers, coverage, exact arithmetic.

include(GenerateExportHeader)

add_library(velmodel_options INTERFACE)
target_compile_options(
  velmodel_options
  INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
            -Wconversion -Wno-sign-conversion -Wold-style-cast -Wundef
            $<$<BOOL:${VELMODEL_WARNINGS_AS_ERRORS}>:-Werror>)
if(VELMODEL_SANITIZERS)
  target_compile_options(velmodel_options INTERFACE -fsanitize=${VELMODEL_SANITIZERS} -fno-omit-frame-pointer
                                                    -fno-sanitize-recover=undefined)
  target_link_options(velmodel_options INTERFACE -fsanitize=${VELMODEL_SANITIZERS})
endif()
if(VELMODEL_COVERAGE)
  target_compile_options(velmodel_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(velmodel_options INTERFACE --coverage)
endif()

# Every floating-point operation is rounded by itself: a fused multiply-add changes about a tenth of all tricky results.
target_compile_options(velmodel_options INTERFACE -ffp-contract=off)

# velmodel_precompile_headers(<target>...)
# Parses the headers that most sources include once for each target. That halves the time of a build. A source that lacks an
# include is found with CMAKE_DISABLE_PRECOMPILE_HEADERS=ON, as one of the package tests has it.
function(velmodel_precompile_headers)
  foreach(target IN LISTS ARGN)
    target_precompile_headers(
      ${target} PRIVATE <algorithm> <memory> <vector> <QtCore/QHash> <QtCore/QSharedPointer> <QtCore/QString>
      <QtCore/QStringList> <QtCore/QVector>)
    # No macros of Qt such as `slots`, which the sources use as names.
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS)
  endforeach()
endfunction()

# velmodel_library(<target> NAMESPACE <Name> INCLUDE <public include dir> EXPORT_HEADER <header below the include dir>)
# Gives a shared library of this project its alias, version, export header and install rules.
function(velmodel_library target)
  cmake_parse_arguments(arg "" "NAMESPACE;INCLUDE;EXPORT_HEADER" "" ${ARGN})
  string(TOUPPER ${arg_NAMESPACE} upper)
  add_library(${arg_NAMESPACE}::${arg_NAMESPACE} ALIAS ${target})
  set_target_properties(
    ${target} PROPERTIES VERSION ${VelModel_VERSION} SOVERSION ${VelModel_VERSION_MAJOR}
                         OUTPUT_NAME ${arg_NAMESPACE} EXPORT_NAME ${arg_NAMESPACE})
  set(generated ${CMAKE_CURRENT_BINARY_DIR}/generated)
  generate_export_header(${target} BASE_NAME ${upper} EXPORT_FILE_NAME ${generated}/${arg_EXPORT_HEADER})
  target_include_directories(
    ${target} PUBLIC $<BUILD_INTERFACE:${arg_INCLUDE}> $<BUILD_INTERFACE:${generated}>
                     $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:velmodel_options>)
  if(VELMODEL_INSTALL)
    velmodel_install_library(${target} ${arg_NAMESPACE} ${arg_INCLUDE} ${generated})
  endif()
endfunction()

function(velmodel_install_library target name include generated)
  include(CMakePackageConfigHelpers)
  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${name})
  install(TARGETS ${target} EXPORT ${name}Targets)
  install(DIRECTORY ${include}/ ${generated}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
  install(EXPORT ${name}Targets NAMESPACE ${name}:: DESTINATION ${package_dir})
  configure_package_config_file(${VelModel_SOURCE_DIR}/cmake/${name}Config.cmake.in
                                ${CMAKE_CURRENT_BINARY_DIR}/${name}Config.cmake INSTALL_DESTINATION ${package_dir})
  write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/${name}ConfigVersion.cmake
                                   VERSION ${VelModel_VERSION} COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}Config.cmake ${CMAKE_CURRENT_BINARY_DIR}/${name}ConfigVersion.cmake
          DESTINATION ${package_dir})
endfunction()

# velmodel_optimise_sources(<file>...)
# For the few sources of tests of this folder that compute much. Other sources of tests are compiled without optimisation.
function(velmodel_optimise_sources)
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS -O2 SKIP_PRECOMPILE_HEADERS ON)
endfunction()

# velmodel_test(<name> SOURCES <file>... [LIBRARIES <target>...] [LABELS <label>...])
# Adds a GoogleTest program. Every TEST in it becomes a separate ctest test.
function(velmodel_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  # With both, each static object of the library would exist twice.
  set(objects velmodel_internals velmodel_internals_test_support)
  set(library VelModel::VelModel velmodel_model_test_support velmodel_commands)
  foreach(object IN LISTS objects)
    foreach(shared IN LISTS library)
      if(object IN_LIST arg_LIBRARIES AND shared IN_LIST arg_LIBRARIES)
        message(FATAL_ERROR "${name} links the objects of the library (${object}) and the library (${shared})")
      endif()
    endforeach()
  endforeach()
  include(GoogleTest)
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE velmodel_options velmodel_test_support ${arg_LIBRARIES} GTest::gmock)
  target_precompile_headers(${name} REUSE_FROM velmodel_test_support)
  set(properties TIMEOUT 600)
  if(arg_LABELS)
    list(APPEND properties LABELS ${arg_LABELS})
  endif()
  gtest_discover_tests(${name} PROPERTIES ${properties} DISCOVERY_TIMEOUT 60)
endfunction()
