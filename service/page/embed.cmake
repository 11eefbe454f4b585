# Writes OUTPUT: the files of the folder SOURCE, each compressed by the program GZIP, as arrays of bytes.
set(types html text/html css text/css js text/javascript
          svg image/svg+xml)

file(GLOB files RELATIVE ${SOURCE} ${SOURCE}/*)
list(SORT files)
set(arrays "")
set(table "")
set(number 0)
foreach(name IN LISTS files)
  get_filename_component(suffix ${name} LAST_EXT)
  string(SUBSTRING ${suffix} 1 -1 suffix)
  list(FIND types ${suffix} found)
  if(found EQUAL -1)
    message(FATAL_ERROR "${name}: what is served as ${suffix} is not said")
  endif()
  math(EXPR found "${found} + 1")
  list(GET types ${found} type)
  if(type MATCHES "^text/")
    set(type "${type}; charset=utf-8")
  endif()

  # Without name and time: the same files are the same bytes.
  execute_process(COMMAND ${GZIP} -9nc ${SOURCE}/${name} OUTPUT_FILE ${OUTPUT}.gz COMMAND_ERROR_IS_FATAL ANY)
  file(READ ${OUTPUT}.gz bytes HEX)
  file(SIZE ${OUTPUT}.gz size)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(REGEX REPLACE "((....,){24})" "\\1\n" bytes "${bytes}")
  string(APPEND arrays "constexpr unsigned char kFile${number}[] = {\n${bytes}};\n")
  set(path /${name})
  if(name STREQUAL index.html)
    set(path /)
  endif()
  string(APPEND table "    {\"${path}\", \"${type}\", kFile${number}, sizeof(kFile${number})},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(REMOVE ${OUTPUT}.gz)

file(WRITE ${OUTPUT} "// Made from the files of the page.
#include \"service/page/assets.h\"

namespace zymdb::service {
namespace {

${arrays}
constexpr Asset kAssets[] = {
${table}};

}  // namespace

std::span<const Asset> page_assets() { return kAssets; }

}  // namespace zymdb::service
")
