# SPDX-License-Identifier: Apache-2.0
# EmbedTables: makes one C++ source of the fact tables, with string literals short enough for any compiler.
# Run by the build:  cmake -DOUTPUT=<file> "-DTABLES=<file>;<file>" -DHEADER=<file> -DSPACE=<namespace> -DVARIABLE=<name>
#                    -P EmbedTables.cmake
# A table's name is its file's name without the extension. The header declares the variable: a span of BuiltInTable.
# No line is cut in two: a reader may take the pieces one by one.

set(piece_size 12000)
set(source "// Made from schemas/ by EmbedTables.cmake.\n#include \"${HEADER}\"\n\n")
string(APPEND source "namespace ${SPACE} {\n\nusing oxa::ifc::def::express::BuiltInTable;\n\nnamespace {\n\n")
set(rows "")
foreach(table IN LISTS TABLES)
  get_filename_component(name "${table}" NAME_WE)
  file(READ "${table}" text)
  if(text MATCHES "[^\n -~]" OR text MATCHES "\\)facts\"")
    message(FATAL_ERROR "${table}: a fact table is plain ASCII text with LF line ends")
  endif()
  string(LENGTH "${text}" length)
  string(APPEND source "constexpr std::string_view g_pieces${name}[] = {\n")
  set(at 0)
  while(at LESS length)
    string(SUBSTRING "${text}" ${at} ${piece_size} piece)
    string(FIND "${piece}" "\n" last_line_end REVERSE)
    math(EXPR piece_length "${last_line_end} + 1")
    if(piece_length EQUAL 0)
      message(FATAL_ERROR "${table}: no line is longer than ${piece_size} characters, and the last one ends, too")
    endif()
    string(SUBSTRING "${text}" ${at} ${piece_length} piece)
    string(APPEND source "R\"facts(${piece})facts\",\n")
    math(EXPR at "${at} + ${piece_length}")
  endwhile()
  string(APPEND source "};\n\n")
  string(APPEND rows "    {\"${name}\", g_pieces${name}},\n")
endforeach()
string(APPEND source "constexpr BuiltInTable g_tables[] = {\n${rows}};\n\n}   // namespace\n\n")
string(APPEND source "const std::span<const BuiltInTable> ${VARIABLE} = g_tables;\n\n")
string(APPEND source "}   // namespace ${SPACE}\n")
file(WRITE "${OUTPUT}" "${source}")
