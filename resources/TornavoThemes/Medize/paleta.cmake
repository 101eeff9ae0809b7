# Tema Cielo claro: colours of the generated Medize.qss.

set(nombre "Tema Cielo claro")
set(descripcion "Light sky-blue theme: pale blue window, white inputs, deep sky-blue selection.")

set(fondo                           "#e6f3fc")
set(texto                           "#0f2a3d")
set(seleccion                       "#1c74bd")
set(texto_seleccion                 "#ffffff")
set(borde                           "#97c6e6")
set(texto_inactivo                  "#4e6779")
set(fondo_ayuda                     "#ffffff")
set(texto_ayuda                     "#0f2a3d")
set(borde_ayuda                     "#1e88d6")
set(radio                           "4px")
set(fondo_barras                    "#cfe8f9")
set(fondo_menu                      "#ffffff")
set(fondo_resaltado                 "#d3ebfb")
set(texto_boton                     "#0f2a3d")
set(acento                          "#1e88d6")
set(fondo_pulsado                   "#a9d5f4")
set(texto_pulsado                   "#0f2a3d")
set(fondo_entrada                   "#ffffff")
set(fondo_alterno                   "#f0f8fe")
set(rejilla                         "#cfe5f5")
set(fondo_cabecera                  "#bfe0f6")
set(texto_cabecera                  "#0f2a3d")
set(borde_cabecera                  "#97c6e6")
set(fondo_resaltado_lista           "#d3ebfb")
set(fondo_solo_lectura              "#eef6fc")
set(fondo_inactivo                  "#e1ecf3")
set(borde_inactivo                  "#c4d8e6")
set(fondo_flechas                   "#f7fbfe")
set(flecha                          "#0f2a3d")
set(fondo_boton                     "#f7fbfe")
set(borde_boton                     "#8ebfe2")
set(titulo_grupo                    "#1a6aa8")
set(fondo_pestana                   "#cfe6f7")
set(texto_pestana                   "#24506f")
set(fondo_calendario                "#1c74bd")
set(texto_calendario                "#ffffff")
set(resaltado_calendario            "#2f8fdb")
set(fondo_desplazamiento            "#d9ecfa")
set(barra_desplazamiento            "#8ebfe2")
set(barra_desplazamiento_resaltada  "#5aa4d9")
set(progreso                        "#8cc6ef")

# Rules only this theme has, added after the common ones.
set(reglas_propias [=[
QPushButton {
    background-color: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #ffffff, stop: 1 #dceffc);
}

QPushButton:hover {
    background-color: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #f2f9ff, stop: 1 #c6e4fa);
}

QPushButton:pressed {
    background-color: #a9d5f4;
}

QPushButton:disabled {
    background-color: #e1ecf3;
}
]=])
