# What the two libraries have in common: their names, what they export, and how they are installed.

# The interface's number: docs/abi.md says when it changes.
set(ZYMDB_ABI 1)
set(ZYMDB_ABI_VERSION ${ZYMDB_ABI}.0.0)

# Every name in LIST is exported in the version node NODE; the linker hides all others, those of inlined library code
# too. A further NODE LIST pair inherits from the one before it.
function(zymdb_exports target)
  set(script "")
  set(before "")
  while(ARGN)
    list(POP_FRONT ARGN node exports)
    set(exports ${CMAKE_CURRENT_SOURCE_DIR}/${exports})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports})
    file(STRINGS ${exports} names REGEX "^[^#]")
    list(JOIN names ";\n  " names)
    string(APPEND script "${node} {\nglobal:\n  ${names};\n")
    if(NOT before)
      string(APPEND script "local:\n  *;\n")
    endif()
    string(APPEND script "}${before};\n")
    set(before " ${node}")
  endwhile()
  set(path ${CMAKE_CURRENT_BINARY_DIR}/exports.map)
  file(CONFIGURE OUTPUT ${path} CONTENT "@script@" @ONLY)
  target_link_options(${target} PRIVATE -Wl,--version-script=${path})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${path})
endfunction()

# A library of the objects of PARTS, shared and, where it is wanted, static. LIBRARIES are what it needs itself.
function(zymdb_library target)
  cmake_parse_arguments(LIBRARY "" "PARTS" "INCLUDES;LIBRARIES" ${ARGN})
  string(REPLACE zymdb_ "" name ${target})
  add_library(${target} SHARED)
  set_target_properties(${target} PROPERTIES VERSION ${ZYMDB_ABI_VERSION} SOVERSION ${ZYMDB_ABI})
  set(targets ${target})
  if(ZYMDB_BUILD_STATIC)
    add_library(${target}_static STATIC)
    set_target_properties(${target}_static PROPERTIES OUTPUT_NAME ${target})
    list(APPEND targets ${target}_static)
  endif()
  foreach(each ${targets})
    string(REPLACE zymdb_ "" exported ${each})
    target_sources(${each} PRIVATE $<TARGET_OBJECTS:${LIBRARY_PARTS}>)
    target_link_libraries(${each} PRIVATE ${LIBRARY_LIBRARIES})
    foreach(folder ${LIBRARY_INCLUDES})
      target_include_directories(${each} INTERFACE $<BUILD_INTERFACE:${folder}>)
    endforeach()
    target_include_directories(${each} INTERFACE
      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/zymdb>)
    set_target_properties(${each} PROPERTIES LINKER_LANGUAGE CXX EXPORT_NAME ${exported})
  endforeach()
  zymdb_install_library(${target})
endfunction()

function(zymdb_install_library target)
  install(TARGETS ${target} EXPORT zymdbTargets
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT dev)
  if(ZYMDB_BUILD_STATIC)
    install(TARGETS ${target}_static EXPORT zymdbStaticTargets ARCHIVE COMPONENT dev)
  endif()
  # The installed tree may be moved as a whole.
  file(RELATIVE_PATH TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  string(REGEX REPLACE "/$" "" TO_PREFIX "${TO_PREFIX}")
  configure_file(${PROJECT_SOURCE_DIR}/packaging/${target}.pc.in ${target}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${target}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endfunction()

# find_package(zymdb), for the libraries that are built.
function(zymdb_install_package)
  include(CMakePackageConfigHelpers)
  set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/zymdb)
  configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/zymdbConfig.cmake.in zymdbConfig.cmake
    INSTALL_DESTINATION ${folder} NO_SET_AND_CHECK_MACRO)
  write_basic_package_version_file(zymdbConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zymdbConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/zymdbConfigVersion.cmake
    DESTINATION ${folder} COMPONENT dev)
  install(EXPORT zymdbTargets NAMESPACE zymdb:: DESTINATION ${folder} COMPONENT dev)
  if(ZYMDB_BUILD_STATIC)
    install(EXPORT zymdbStaticTargets NAMESPACE zymdb:: DESTINATION ${folder} COMPONENT dev)
  endif()
endfunction()
