# Installation and the two Debian packages, built with `cpack -G DEB` (see scripts/paquetes-deb):
#   tornavo-su        the console, its launcher and desktop entry, icon, animal pictures and the
#                     demo result script (component consola);
#   tornavo-servidor  the reference server and its systemd unit (component servidor).
# Everything the console needs on disk is installed from here; its style sheets and images are
# compiled into it.
include(GNUInstallDirs)

set(TORNAVO_PAQUETES_FUENTES ${CMAKE_SOURCE_DIR}/paquetes)
set(TORNAVO_PAQUETES_SALIDA ${CMAKE_BINARY_DIR}/paquetes)
set(TORNAVO_COMPARTIDO ${CMAKE_INSTALL_FULL_DATADIR}/tornavo-su)
set(TORNAVO_CONSOLA ${CMAKE_INSTALL_FULL_BINDIR}/tornavo-su)
set(TORNAVO_SERVIDOR ${CMAKE_INSTALL_FULL_BINDIR}/tornavo-servidor)
set(TORNAVO_USUARIO tornavo)
set(TORNAVO_ESTADO /var/lib/tornavo)
set(TORNAVO_PUERTO 8080)
set(TORNAVO_SERVIDOR_LOCAL 127.0.0.1:${TORNAVO_PUERTO})
set(TORNAVO_UNIDAD tornavo-servidor.service)
set(TORNAVO_MANTENEDOR "Equipo de Tornavo Super Usuario <paquetes@tornavo.invalid>")
# The animal games of the demo network (servidor/demo.cpp): each gets the same picture set.
set(TORNAVO_JUEGOS_ANIMALES "Fauna Activa" "Selva Dorada" "Rancho Feliz")
set(TORNAVO_DOC_CONSOLA ${CMAKE_INSTALL_DATADIR}/doc/tornavo-su)
set(TORNAVO_DOC_SERVIDOR ${CMAKE_INSTALL_DATADIR}/doc/tornavo-servidor)

# Files that carry installed paths, the changelogs and the man pages (compressed, without
# time stamps, so that two builds give the same packages).
configure_file(${TORNAVO_PAQUETES_FUENTES}/tornavo-su-escritorio.in
               ${TORNAVO_PAQUETES_SALIDA}/tornavo-su-escritorio @ONLY)
configure_file(${TORNAVO_PAQUETES_FUENTES}/tornavo-servidor.service.in
               ${TORNAVO_PAQUETES_SALIDA}/${TORNAVO_UNIDAD} @ONLY)
foreach(script postinst prerm postrm)
    configure_file(${TORNAVO_PAQUETES_FUENTES}/servidor/${script}.in
                   ${TORNAVO_PAQUETES_SALIDA}/servidor/${script} @ONLY
                   FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ
                                    GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
endforeach()

find_program(TORNAVO_GZIP gzip REQUIRED)
function(tornavo_comprimir fuente destino)
    execute_process(COMMAND ${TORNAVO_GZIP} -9nc ${fuente} OUTPUT_FILE ${destino}
                    COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${fuente})
endfunction()
foreach(paquete tornavo-su tornavo-servidor)
    set(PAQUETE ${paquete})
    set(VERSION ${PROJECT_VERSION})
    set(MANTENEDOR ${TORNAVO_MANTENEDOR})
    configure_file(${TORNAVO_PAQUETES_FUENTES}/changelog.in
                   ${TORNAVO_PAQUETES_SALIDA}/${paquete}/changelog @ONLY)
    tornavo_comprimir(${TORNAVO_PAQUETES_SALIDA}/${paquete}/changelog
                      ${TORNAVO_PAQUETES_SALIDA}/${paquete}/changelog.gz)
endforeach()
foreach(pagina tornavo-su tornavo-servidor)
    tornavo_comprimir(${TORNAVO_PAQUETES_FUENTES}/man/${pagina}.1
                      ${TORNAVO_PAQUETES_SALIDA}/${pagina}.1.gz)
endforeach()

# Picture folders of the demo games: links to the one picture set.
file(REMOVE_RECURSE ${TORNAVO_PAQUETES_SALIDA}/animales)
file(MAKE_DIRECTORY ${TORNAVO_PAQUETES_SALIDA}/animales)
foreach(juego IN LISTS TORNAVO_JUEGOS_ANIMALES)
    file(CREATE_LINK ../tarjetas "${TORNAVO_PAQUETES_SALIDA}/animales/${juego}" SYMBOLIC)
endforeach()

# The console.
install(TARGETS tornavo-su RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT consola)
install(PROGRAMS ${TORNAVO_PAQUETES_SALIDA}/tornavo-su-escritorio
        DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT consola)
install(FILES ${TORNAVO_PAQUETES_FUENTES}/tornavo-su.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT consola)
install(FILES ${CMAKE_SOURCE_DIR}/resources/Imagenes/tornavo.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/256x256/apps
        RENAME tornavo-su.png COMPONENT consola)
install(FILES ${CMAKE_SOURCE_DIR}/resources/svg/tornavo.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
        RENAME tornavo-su.svg COMPONENT consola)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/resources/animales/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/tornavo-su/tarjetas COMPONENT consola
        FILES_MATCHING PATTERN "*.png" PATTERN "*.jpg")
install(DIRECTORY ${TORNAVO_PAQUETES_SALIDA}/animales
        DESTINATION ${CMAKE_INSTALL_DATADIR}/tornavo-su COMPONENT consola)
install(FILES ${CMAKE_SOURCE_DIR}/servidor/demo/resultados_demo.py
        DESTINATION ${CMAKE_INSTALL_DATADIR}/tornavo-su COMPONENT consola)
install(FILES ${TORNAVO_PAQUETES_SALIDA}/tornavo-su.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT consola)
install(FILES ${TORNAVO_PAQUETES_SALIDA}/tornavo-su.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 RENAME tornavo-su-escritorio.1.gz
        COMPONENT consola)
install(FILES ${TORNAVO_PAQUETES_FUENTES}/copyright
              ${TORNAVO_PAQUETES_SALIDA}/tornavo-su/changelog.gz
        DESTINATION ${TORNAVO_DOC_CONSOLA} COMPONENT consola)

# The server and its unit.
install(TARGETS tornavo-servidor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT servidor)
install(FILES ${TORNAVO_PAQUETES_SALIDA}/${TORNAVO_UNIDAD}
        DESTINATION /lib/systemd/system COMPONENT servidor)
install(FILES ${TORNAVO_PAQUETES_SALIDA}/tornavo-servidor.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT servidor)
install(FILES ${TORNAVO_PAQUETES_FUENTES}/copyright
              ${TORNAVO_PAQUETES_SALIDA}/tornavo-servidor/changelog.gz
        DESTINATION ${TORNAVO_DOC_SERVIDOR} COMPONENT servidor)

# The packages.
set(CPACK_PACKAGE_NAME tornavo)
set(CPACK_PACKAGE_VENDOR "Equipo de Tornavo Super Usuario")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${TORNAVO_MANTENEDOR})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL consola servidor)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${TORNAVO_MANTENEDOR})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_CONSOLA_PACKAGE_NAME tornavo-su)
set(CPACK_DEBIAN_CONSOLA_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_CONSOLA_PACKAGE_DEPENDS qttranslations5-l10n)
set(CPACK_DEBIAN_CONSOLA_PACKAGE_RECOMMENDS python-is-python3)
set(CPACK_COMPONENT_CONSOLA_DESCRIPTION
    "consola de administración del back office de loterías y animalitos
La consola del super usuario de una red de ventas de loterías y
animalitos: monitor de ventas por sorteo, cálculo, publicación y
deshacer de premios, autopremiación con guiones de resultados y
reportes de ventas por banca y por super banca.
.
Trae la entrada de escritorio, que arranca la consola en una carpeta
propia de cada usuario, las imágenes de los animales y el guion de
resultados de demostración.")

set(CPACK_DEBIAN_SERVIDOR_PACKAGE_NAME tornavo-servidor)
set(CPACK_DEBIAN_SERVIDOR_PACKAGE_SECTION net)
set(CPACK_DEBIAN_SERVIDOR_PACKAGE_DEPENDS adduser)
set(CPACK_DEBIAN_SERVIDOR_PACKAGE_CONTROL_EXTRA
    ${TORNAVO_PAQUETES_SALIDA}/servidor/postinst
    ${TORNAVO_PAQUETES_SALIDA}/servidor/prerm
    ${TORNAVO_PAQUETES_SALIDA}/servidor/postrm)
set(CPACK_COMPONENT_SERVIDOR_DESCRIPTION
    "servidor de referencia del back office de Tornavo
Sirve por HTTP, desde una base SQLite, las consultas de la consola
tornavo-su, con una red de demostración y sus usuarios.
.
Corre como servicio de systemd con su propio usuario de sistema,
su base en /var/lib/tornavo y escuchando solo en 127.0.0.1:8080.")

include(CPack)
