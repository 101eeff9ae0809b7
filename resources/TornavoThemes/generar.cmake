# Writes one theme's style sheet: the common rules of the template with the palette's values in
# place of its @name@ marks, then the rules only that theme has (`reglas_propias`), if any.
#
#   cmake -DPLANTILLA=plantilla.qss.in -DPALETA=<theme>/paleta.cmake -DSALIDA=<sheet> \
#         -P generar.cmake
#
# A mark the palette leaves unset stops the build with the mark's name, so no sheet ever ships
# with an empty colour.
cmake_minimum_required(VERSION 3.25)

foreach(argumento PLANTILLA PALETA SALIDA)
    if(NOT DEFINED ${argumento})
        message(FATAL_ERROR "generar.cmake: falta -D${argumento}=")
    endif()
endforeach()

include("${PALETA}")
if(NOT DEFINED nombre OR nombre STREQUAL "")
    message(FATAL_ERROR "${PALETA}: falta el nombre del tema")
endif()

file(READ "${PLANTILLA}" _hoja)
if(DEFINED reglas_propias)
    string(APPEND _hoja "\n/* ---- ${nombre}: own touches ---- */\n${reglas_propias}")
endif()

# Every mark must have a value, and every colour must be written as #rrggbb.
string(REGEX MATCHALL "@[A-Za-z0-9_]+@" _marcas "${_hoja}")
list(REMOVE_DUPLICATES _marcas)
set(_faltan)
foreach(_marca IN LISTS _marcas)
    string(REGEX REPLACE "^@(.*)@$" "\\1" _variable "${_marca}")
    if(NOT DEFINED ${_variable} OR "${${_variable}}" STREQUAL "")
        list(APPEND _faltan ${_variable})
    elseif("${${_variable}}" MATCHES "^#" AND NOT "${${_variable}}" MATCHES "^#[0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f]$")
        message(FATAL_ERROR "${PALETA}: ${_variable} = \"${${_variable}}\" no es un color #rrggbb")
    endif()
endforeach()
if(_faltan)
    list(JOIN _faltan ", " _faltan)
    message(FATAL_ERROR "${PALETA}: sin valor para ${_faltan}")
endif()

string(CONFIGURE "${_hoja}" _hoja @ONLY)
file(WRITE "${SALIDA}" "${_hoja}")
