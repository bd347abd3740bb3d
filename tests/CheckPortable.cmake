# SPDX-License-Identifier: Apache-2.0
# CheckPortable: what a compiler or a system has beyond the standard stands in a few files, so that another compiler or
# system needs a look at those alone.
#
# Usage    cmake -DROOT=<checkout> -P CheckPortable.cmake
# Rule     of src/ and tools/:
#          the compiler's own    src/platform/Compiler.h and Export.h, and the vector instructions of ByteBlock.h
#                                and Sha256Block.h
#          the system's own      the files System*.cpp; what Linux alone has, SystemLinux.cpp
#          not at all            <barrier>, <latch>, <semaphore>
# What a build with -Wpedantic refuses, such as statement expressions and arrays without items, is not looked for again.
cmake_minimum_required(VERSION 3.22)

set(compiler_files "^src/(platform/(Compiler|Export)|Format/Ifc/Text/ByteBlock|Tables/Sha256Block)\\.h$")
set(system_files "/System[A-Za-z]*\\.cpp$")
set(linux_files "/SystemLinux\\.cpp$")
# Headers of libraries, beside the standard's, which have neither a dot nor a slash.
set(libraries "^(CLI|date|fast_float|fmt|inja|nlohmann|re2)/|^(pugixml\\.hpp|sqlite3(ext)?\\.h|utf8\\.h|xlsxwriter\\.h|zip\\.h|zlib\\.h)$")

# In front of a name stands what is no part of one, and no member's or scope's mark.
set(word "(^|[^A-Za-z0-9_.:>])")
# rule(<what it is> <where it may stand> <expression>...): one more thing to look for.
set(rules 0)
function(rule what files)
  list(JOIN ARGN "|" pattern)
  math(EXPR count "${rules} + 1")
  set(rules ${count} PARENT_SCOPE)
  set(what_${count} "${what}" PARENT_SCOPE)
  set(files_${count} "${files}" PARENT_SCOPE)
  set(pattern_${count} "${pattern}" PARENT_SCOPE)
endfunction()

rule("what a compiler has beyond the standard" "${compiler_files}"
  "__(attribute|builtin_|extension__|int128|float128|typeof|restrict|declspec|forceinline|PRETTY_FUNCTION|asm)"
  "${word}(asm|typeof|alloca) *\\(" "${word}(gnu|clang|msvc)::" "_Pragma" "# *pragma +(GCC|clang|pack|warning|comment)"
  "# *include_next")
rule("a condition on the compiler or the system" "${compiler_files}|${system_files}"
  "# *(if|elif|ifdef|ifndef)[^\n]*(__linux|__unix|__APPLE__|__GLIBC|_WIN|WIN32|_MSC|__GNUC__|__clang|__MINGW|__CYGWIN)"
  "# *(if|elif|ifdef|ifndef)[^\n]*(__aarch64|__x86_64|__i386|_M_|__SSE|__AVX|__ARM|__SIZEOF_|MADV_|MAP_|__has_include)")
rule("what a system has beyond the standard" "${system_files}"
  "${word}(ssize_t|off_t|locale_t|fileno|isatty|fdopen|fsync|fseeko|ftello|popen|pclose|mkstemp|mkdtemp|realpath|strdup|\
strndup|strcasecmp|strncasecmp|strtod_l|newlocale|uselocale|v?asprintf|memmem|memrchr|mempcpy|stpcpy|strchrnul|timegm|\
localtime_r|gmtime_r|strptime|setenv|unsetenv|putenv|usleep|nanosleep|getpid|fork|execv[pe]*|waitpid|sigaction|mmap|munmap|\
getrusage|sysconf|qsort_r|M_PI)([^A-Za-z0-9_]|$)")
rule("a path of one system" "${system_files}" "\"/(dev|proc|sys|tmp|etc|usr|home)/")
# Those of g++'s library sleep for ever now and then where there is no futex, as on Windows.
rule("a wait of <atomic>, <barrier>, <latch> or <semaphore> instead of a condition" "^$"
  "# *include <(barrier|latch|semaphore)>" "${word}atomic_(wait|notify)" "\\.wait\\([^()]*memory_order")
rule("what Linux alone has" "${linux_files}"
  "/proc/|MADV_|memfd_|copy_file_range|getrandom|O_TMPFILE|mremap|gettid|prctl|epoll|inotify|fallocate|MAP_NORESERVE")

set(faults)
set(seen 0)
file(GLOB_RECURSE sources RELATIVE "${ROOT}" "${ROOT}/src/*.h" "${ROOT}/src/*.cpp" "${ROOT}/tools/*.h" "${ROOT}/tools/*.cpp")
foreach(source IN LISTS sources)
  math(EXPR seen "${seen} + 1")
  file(READ "${ROOT}/${source}" text)
  string(REGEX REPLACE "[][;]" " " text "${text}")   # which mean something in a list
  string(REGEX REPLACE "(^|[\n ])//[^\n]*" "\\1" text "${text}")
  string(REPLACE "__builtin_LINE" "" text "${text}")   # which g++, clang++ and MSVC have
  foreach(rule RANGE 1 ${rules})
    if(NOT source MATCHES "${files_${rule}}" AND text MATCHES "${pattern_${rule}}")
      string(REGEX MATCH "[^\n]*(${pattern_${rule}})[^\n]*" line "${text}")
      string(STRIP "${line}" line)
      list(APPEND faults "${source} has ${what_${rule}}: ${line}")
    endif()
  endforeach()
  if(source MATCHES "${compiler_files}" OR source MATCHES "${system_files}")
    continue()
  endif()
  string(REGEX MATCHALL "# *include <[^>\n]*[./][^>\n]*>" includes "${text}")
  foreach(include IN LISTS includes)
    string(REGEX REPLACE ".*<(.*)>" "\\1" header "${include}")
    if(NOT header MATCHES "${libraries}")
      list(APPEND faults "${source} includes <${header}>, which is neither the standard's nor a library's")
    endif()
  endforeach()
endforeach()

if(seen LESS 300)
  message(FATAL_ERROR "only ${seen} sources under ${ROOT}: the patterns are wrong")
endif()
if(faults)
  list(JOIN faults "\n  " faults)
  message(FATAL_ERROR "outside of the files that are there for it (${CMAKE_CURRENT_LIST_FILE}):\n  ${faults}")
endif()
message(STATUS "${seen} sources")
