# SPDX-License-Identifier: Apache-2.0
# EmbedText: makes a C++ source of a text file, a function that gives the text.
# Run by the build:  cmake -DINPUT=<file> -DOUTPUT=<file> -DHEADER=<header> -DFUNCTION=<name> -P EmbedText.cmake

set(piece_size 12000)   # string literals short enough for any compiler
file(READ "${INPUT}" text)
if(text MATCHES "[^\n -~]" OR text MATCHES "\\)text\"")
  message(FATAL_ERROR "${INPUT}: only plain ASCII text with LF line ends can be embedded")
endif()
get_filename_component(name "${INPUT}" NAME)
set(source "// Made from ${name} by EmbedText.cmake.\n#include \"${HEADER}\"\n\n")
string(APPEND source "std::string oxa::tool::${FUNCTION}() {\n    std::string sText;\n")
string(LENGTH "${text}" length)
set(at 0)
while(at LESS length)
  string(SUBSTRING "${text}" ${at} ${piece_size} piece)
  string(APPEND source "    sText += R\"text(${piece})text\";\n")
  math(EXPR at "${at} + ${piece_size}")
endwhile()
string(APPEND source "    return sText;\n}\n")
file(WRITE "${OUTPUT}" "${source}")
