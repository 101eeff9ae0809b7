# Tema MacOS: colours of the generated MacOS.qss.

set(nombre "Tema MacOS")
set(descripcion "Light, rounded look: white controls, blue default button and selection.")

set(fondo                           "#ececec")
set(texto                           "#1d1d1f")
set(seleccion                       "#0a64d6")
set(texto_seleccion                 "#ffffff")
set(borde                           "#c6c6c9")
set(texto_inactivo                  "#636367")
set(fondo_ayuda                     "#fdfdfd")
set(texto_ayuda                     "#1d1d1f")
set(borde_ayuda                     "#c6c6c9")
set(radio                           "6px")
set(fondo_barras                    "#e7e7e7")
set(fondo_menu                      "#fbfbfb")
set(fondo_resaltado                 "#f7f7f8")
set(texto_boton                     "#1d1d1f")
set(acento                          "#0a7aff")
set(fondo_pulsado                   "#dcdcdf")
set(texto_pulsado                   "#1d1d1f")
set(fondo_entrada                   "#ffffff")
set(fondo_alterno                   "#f4f5f7")
set(rejilla                         "#e1e1e4")
set(fondo_cabecera                  "#f6f6f6")
set(texto_cabecera                  "#3a3a3c")
set(borde_cabecera                  "#d4d4d7")
set(fondo_resaltado_lista           "#f7f7f8")
set(fondo_solo_lectura              "#f6f6f7")
set(fondo_inactivo                  "#f2f2f2")
set(borde_inactivo                  "#d9d9dc")
set(fondo_flechas                   "#ffffff")
set(flecha                          "#555558")
set(fondo_boton                     "#ffffff")
set(borde_boton                     "#c2c2c6")
set(titulo_grupo                    "#1d1d1f")
set(fondo_pestana                   "#e2e2e4")
set(texto_pestana                   "#1d1d1f")
set(fondo_calendario                "#f3f3f3")
set(texto_calendario                "#1d1d1f")
set(resaltado_calendario            "#dcdcdf")
set(fondo_desplazamiento            "#f3f3f3")
set(barra_desplazamiento            "#c1c1c4")
set(barra_desplazamiento_resaltada  "#9d9da2")
set(progreso                        "#7fb4f5")

# Rules only this theme has, added after the common ones.
set(reglas_propias [=[
QPushButton {
    background-color: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #ffffff, stop: 1 #f1f1f2);
    padding: 4px 14px;
}

QPushButton:default {
    background-color: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #1a6fdc, stop: 1 #0a5fc9);
    color: #ffffff;
    border: 1px solid #0a5fc9;
}

QPushButton:default:hover {
    background-color: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #1f74e0, stop: 1 #0a64d6);
}

QPushButton:default:pressed {
    background-color: #0a5fc9;
    color: #ffffff;
}

QPushButton:default:disabled {
    background-color: @fondo_inactivo@;
    color: @texto_inactivo@;
    border: 1px solid @borde_inactivo@;
}

QTabWidget::tab-bar {
    alignment: center;
}

QTabBar::tab {
    border: 1px solid #c6c6c9;
    border-radius: 0px;
    margin-right: 0px;
    margin-top: 0px;
    padding: 4px 16px;
    background-color: #ffffff;
}

QTabBar::tab:first {
    border-top-left-radius: 6px;
    border-bottom-left-radius: 6px;
}

QTabBar::tab:last {
    border-top-right-radius: 6px;
    border-bottom-right-radius: 6px;
}

QTabBar::tab:!selected {
    margin-top: 0px;
}

QTabBar::tab:selected {
    background-color: #0a64d6;
    color: #ffffff;
    border: 1px solid #0a5fc9;
}

QTabWidget::pane {
    top: -12px;
    padding-top: 14px;
}

QMenu {
    border-radius: 6px;
    padding: 5px;
}

QMenu::item {
    border-radius: 4px;
}

QMenuBar {
    border-bottom: 1px solid #d0d0d3;
}

QScrollBar::handle:vertical,
QScrollBar::handle:horizontal {
    border-radius: 4px;
}
]=])
