# Compares the dynamic symbols that LIBRARY defines with the list in EXPECTED.
# Variables: NM (an nm that knows -D, --defined-only and -C), LIBRARY, EXPECTED.
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND "${NM}" -D --defined-only -C "${LIBRARY}"
  RESULT_VARIABLE status OUTPUT_VARIABLE listing ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${NM} failed on ${LIBRARY}:\n${errors}")
endif()

# Each line is "address type name"; the name may hold spaces and semicolons.
string(REPLACE ";" "<semicolon>" listing "${listing}")
string(REPLACE "\n" ";" lines "${listing}")
set(actual "")
foreach(line IN LISTS lines)
  if(line MATCHES "^[0-9a-fA-F]* *[A-Za-z] (.+)$")
    set(name "${CMAKE_MATCH_1}")
    string(REPLACE "std::__cxx11::basic_string<char16_t, std::char_traits<char16_t>, std::allocator<char16_t> >"
      "std::u16string" name "${name}")
    string(REPLACE "std::basic_string_view<char, std::char_traits<char> >" "std::string_view" name "${name}")
    string(REPLACE "[abi:cxx11]" "" name "${name}")
    list(APPEND actual "${name}")
  endif()
endforeach()

file(STRINGS "${EXPECTED}" expected REGEX "^[^#]")

set(unexpected "${actual}")
list(REMOVE_ITEM unexpected ${expected})
set(missing "${expected}")
list(REMOVE_ITEM missing ${actual})
if(unexpected OR missing)
  list(JOIN unexpected "\n  " unexpected)
  list(JOIN missing "\n  " missing)
  message(FATAL_ERROR "Exported but not listed:\n  ${unexpected}\nListed but not exported:\n  ${missing}")
endif()
list(LENGTH actual count)
message(STATUS "${count} symbols, as listed")
