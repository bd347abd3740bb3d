# SPDX-License-Identifier: Apache-2.0
# OxaDependencies: the third-party libraries, each found once, each behind one target name.
# docs/dependencies.md says what each is for.

find_package(Threads REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(FastFloat 8 REQUIRED)

# Header-only and without a package file on Debian: found by their headers.
find_path(OXA_UTF8CPP_INCLUDE utf8.h PATH_SUFFIXES utf8cpp REQUIRED)
find_path(OXA_DATE_INCLUDE date/date.h REQUIRED)
find_path(OXA_INJA_INCLUDE inja/inja.hpp REQUIRED)

# pugixml, the tree of XML documents.
find_package(PkgConfig REQUIRED)
pkg_check_modules(pugixml REQUIRED IMPORTED_TARGET pugixml)

# RE2, the regular expressions of selectors.
pkg_check_modules(re2 REQUIRED IMPORTED_TARGET re2)

# SQLite, which tables are written to and asked by.
pkg_check_modules(sqlite3 REQUIRED IMPORTED_TARGET sqlite3>=3.40)

# libxlsxwriter, which workbooks of tables come from.
pkg_check_modules(xlsxwriter REQUIRED IMPORTED_TARGET xlsxwriter)

# libzip and zlib, which unpack .ifczip and .gz.
pkg_check_modules(libzip REQUIRED IMPORTED_TARGET libzip)
pkg_check_modules(zlib REQUIRED IMPORTED_TARGET zlib)

if(OXA_BUILD_TESTS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()
