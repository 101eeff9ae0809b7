# Checks that the palettes and the template stay independent of each other:
#  - a value changed in one theme's palette changes that theme's sheet and no other;
#  - every value a palette sets appears in its sheet (no palette entry is dead).
#
#   cmake -DFUENTE=<resources/TornavoThemes> -DTRABAJO=<scratch folder> -P comprobar.cmake
cmake_minimum_required(VERSION 3.25)

foreach(argumento FUENTE TRABAJO)
    if(NOT DEFINED ${argumento})
        message(FATAL_ERROR "comprobar.cmake: falta -D${argumento}=")
    endif()
endforeach()

file(REMOVE_RECURSE "${TRABAJO}")
file(GLOB paletas RELATIVE "${FUENTE}" "${FUENTE}/*/paleta.cmake")
list(LENGTH paletas cantidad)
if(cantidad LESS 10)
    message(FATAL_ERROR "solo ${cantidad} paletas en ${FUENTE}")
endif()

# generar(<palette file> <sheet>)
function(generar paleta salida)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -DPLANTILLA=${FUENTE}/plantilla.qss.in -DPALETA=${paleta}
                -DSALIDA=${salida} -P ${FUENTE}/generar.cmake
        RESULT_VARIABLE codigo ERROR_VARIABLE error)
    if(NOT codigo EQUAL 0)
        message(FATAL_ERROR "${paleta}: ${error}")
    endif()
endfunction()

# generar_todas(<folder>): every theme's sheet from the original palettes, except the
# palette of <cambiada>, taken from <otra>.
function(generar_todas carpeta cambiada otra)
    foreach(p IN LISTS paletas)
        if(p STREQUAL cambiada)
            generar(${otra} ${carpeta}/${p}.qss)
        else()
            generar(${FUENTE}/${p} ${carpeta}/${p}.qss)
        endif()
    endforeach()
endfunction()

# A value unlike any a theme uses, for a colour or a length.
function(otro_valor valor salida)
    if(valor MATCHES "^#")
        set(nuevo "#010203")
    else()
        set(nuevo "97px")
    endif()
    set(${salida} ${nuevo} PARENT_SCOPE)
endfunction()

generar_todas(${TRABAJO}/base "" "")
file(READ "${FUENTE}/plantilla.qss.in" plantilla)

foreach(p IN LISTS paletas)
    file(STRINGS "${FUENTE}/${p}" asignaciones REGEX "^set\\([a-z_]+ +\"(#[0-9a-f]+|[0-9]+px)\"\\)$")
    file(READ "${FUENTE}/${p}" texto)

    # Every value is put somewhere: in the common rules or in the theme's own.
    set(variables)
    foreach(asignacion IN LISTS asignaciones)
        string(REGEX REPLACE "^set\\(([a-z_]+) .*" "\\1" variable "${asignacion}")
        string(FIND "${plantilla}${texto}" "@${variable}@" donde)
        if(donde EQUAL -1)
            message(FATAL_ERROR "${p}: ${variable} no se usa en ninguna regla")
        endif()
        list(APPEND variables ${variable})
    endforeach()

    # The first value changed: this theme's sheet differs, every other is the same.
    list(GET asignaciones 0 asignacion)
    string(REGEX REPLACE "^set\\(([a-z_]+) +\"([^\"]+)\"\\)$" "\\1" variable "${asignacion}")
    string(REGEX REPLACE "^set\\(([a-z_]+) +\"([^\"]+)\"\\)$" "\\2" valor "${asignacion}")
    otro_valor(${valor} nuevo)
    string(REPLACE "${asignacion}" "set(${variable} \"${nuevo}\")" cambiado "${texto}")
    set(copia ${TRABAJO}/paletas/${p})
    file(WRITE ${copia} "${cambiado}")
    generar_todas(${TRABAJO}/cambio ${p} ${copia})
    set(distintas)
    foreach(q IN LISTS paletas)
        file(READ ${TRABAJO}/base/${q}.qss antes)
        file(READ ${TRABAJO}/cambio/${q}.qss despues)
        if(NOT antes STREQUAL despues)
            list(APPEND distintas ${q})
        endif()
    endforeach()
    if(NOT distintas STREQUAL p)
        message(FATAL_ERROR "cambiar ${variable} en ${p} cambio las hojas: ${distintas}")
    endif()
    list(LENGTH variables n)
    message(STATUS "${p}: ${n} valores usados; ${variable} cambiado solo cambia su hoja")
endforeach()
