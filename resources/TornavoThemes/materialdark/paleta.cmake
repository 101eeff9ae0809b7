# Tema Material Oscuro: colours of the generated materialdark.qss.

set(nombre "Tema Material Oscuro")
set(descripcion "Material dark theme: near-black surfaces, teal buttons and accents, underlined inputs.")

set(fondo                           "#0f0f0f")
set(texto                           "#eeeeee")
set(seleccion                       "#00796b")
set(texto_seleccion                 "#ffffff")
set(borde                           "#424242")
set(texto_inactivo                  "#949494")
set(fondo_ayuda                     "#424242")
set(texto_ayuda                     "#ffffff")
set(borde_ayuda                     "#616161")
set(radio                           "4px")
set(fondo_barras                    "#2c2c2c")
set(fondo_menu                      "#2c2c2c")
set(fondo_resaltado                 "#00695c")
set(texto_boton                     "#ffffff")
set(acento                          "#26a69a")
set(fondo_pulsado                   "#004d40")
set(texto_pulsado                   "#ffffff")
set(fondo_entrada                   "#141414")
set(fondo_alterno                   "#151515")
set(rejilla                         "#3a3a3a")
set(fondo_cabecera                  "#333333")
set(texto_cabecera                  "#80cbc4")
set(borde_cabecera                  "#424242")
set(fondo_resaltado_lista           "#383838")
set(fondo_solo_lectura              "#111111")
set(fondo_inactivo                  "#2a2a2a")
set(borde_inactivo                  "#3a3a3a")
set(fondo_flechas                   "#383838")
set(flecha                          "#eeeeee")
set(fondo_boton                     "#00796b")
set(borde_boton                     "#00897b")
set(titulo_grupo                    "#80cbc4")
set(fondo_pestana                   "#212121")
set(texto_pestana                   "#9e9e9e")
set(fondo_calendario                "#00796b")
set(texto_calendario                "#ffffff")
set(resaltado_calendario            "#26a69a")
set(fondo_desplazamiento            "#262626")
set(barra_desplazamiento            "#555555")
set(barra_desplazamiento_resaltada  "#26a69a")
set(progreso                        "#00796b")

# Rules only this theme has, added after the common ones.
set(reglas_propias [=[
QLineEdit,
QAbstractSpinBox {
    border: none;
    border-bottom: 2px solid #616161;
    border-radius: 0px;
    background-color: #2c2c2c;
}

QLineEdit:focus,
QAbstractSpinBox:focus {
    border: none;
    border-bottom: 2px solid @acento@;
}

QLineEdit:disabled,
QAbstractSpinBox:disabled {
    border: none;
    border-bottom: 2px dotted @borde@;
}

QPushButton {
    border: none;
    padding: 5px 10px;
}

QPushButton:default {
    border: 2px solid #80cbc4;
}

QPushButton:disabled {
    border: none;
}

QTabBar::tab {
    border: none;
    border-bottom: 2px solid transparent;
    border-radius: 0px;
}

QTabBar::tab:selected {
    border: none;
    border-bottom: 2px solid @acento@;
    color: #80cbc4;
}

QTabWidget::pane {
    border: none;
    border-top: 1px solid @borde@;
}

QToolButton:hover {
    background-color: #383838;
    color: @texto@;
    border-color: #383838;
}
]=])
