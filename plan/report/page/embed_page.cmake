# Puts the page together and writes it as a C++ source: cmake -D SOURCE=... -D SCRIPTS=a.js;b.js -D CHART=...
# -D VERSION=... -D LICENCE=... -D OUTPUT=... -P embed_page.cmake. An empty CHART gives nothing but "@data@".
cmake_minimum_required(VERSION 3.18)

# The source expression by which a page's Content-Security-Policy allows one script or style: its SHA-256 in base64.
function(allow text result)
  string(SHA256 hex "${text}")
  set(alphabet ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  set(base64 "")
  foreach(at RANGE 0 63 3) # three hexadecimal digits are two of base64; the 64th is half of one
    string(SUBSTRING "${hex}00" ${at} 3 digits)
    math(EXPR high "0x${digits} >> 6")
    math(EXPR low "0x${digits} & 63")
    foreach(index ${high} ${low})
      string(SUBSTRING ${alphabet} ${index} 1 letter)
      string(APPEND base64 ${letter})
    endforeach()
  endforeach()
  string(SUBSTRING ${base64} 0 43 base64)
  set(${result} "'sha256-${base64}='" PARENT_SCOPE)
endfunction()

set(html "@data@")
if(CHART)
  file(READ ${SOURCE}/page.html html)
  file(READ ${SOURCE}/page.css css)
  foreach(part ${SCRIPTS}) # one script, one scope
    file(READ ${SOURCE}/${part} text)
    string(APPEND scripts "\n${text}")
  endforeach()
  set(js "\"use strict\";\n(() => {${scripts}})();\n")
  file(READ ${CHART} chart)
  file(READ ${LICENCE} licence)
  # Chart.js comes under the same licence as this program: the terms without the line that names the holder.
  string(REGEX MATCH "Permission is hereby granted.*" terms "${licence}")
  if(chart MATCHES "</[sS][cC]" OR chart MATCHES "<!--")
    message(FATAL_ERROR "${CHART} cannot stand inside a page")
  endif()
  allow("${css}" css_hash)
  allow("${js}" js_hash)
  allow("${chart}" chart_hash)
  foreach(place css_hash js_hash chart_hash VERSION terms css js chart)
    string(REPLACE "@${place}@" "${${place}}" html "${html}")
  endforeach()
endif()

# An array of characters, for which no compiler has a limit.
string(HEX "${html}" hex)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," characters "${hex}")
file(WRITE ${OUTPUT} "// Made by embed_page.cmake.
#include \"plan/report/page/page_text.h\"
static const char characters[] = {${characters}'\\0'};
std::string_view page_text() { return {characters, sizeof characters - 1}; }
")
