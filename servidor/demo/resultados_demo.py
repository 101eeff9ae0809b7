#!/usr/bin/env python3
"""Demo result script of the automatic awarding.

Run by the console ("python resultados_demo.py") in its working directory. It asks the
server named on the first line of Tornavo.svr for today's draws of its own game (the games
whose script is "resultados_demo") whose time has passed and that have no result yet, draws a
result for each and writes them to "resultados_demo.txt":

    yyyy-MM-dd                 the server's date of the results
    gameKey,drawKey,result     one line per draw

The file is written to a temporary name and renamed, so the console never reads half a file.
Nothing is written when no draw is waiting. Standard library only.
"""

import os
import random
import sys
import urllib.request

NOMBRE = os.path.splitext(os.path.basename(__file__))[0]
ARCHIVO = NOMBRE + ".txt"
ESPERA = 8  # seconds; the console kills a script that runs for more than 10


def url_base(servidor):
    """Base URL for the first line of Tornavo.svr, by the console's own rule."""
    if len(servidor.split(".")) > 3:
        return "http://" + servidor + "/Tornavo/TornavoSU/"
    if "http" in servidor:
        return servidor + "/Tornavo/TornavoSU/"
    return "https://" + servidor + "/Tornavo/TornavoSU/"


def leer_servidor():
    try:
        with open("Tornavo.svr", encoding="latin-1") as f:
            linea = f.readline().strip()
    except OSError:
        linea = ""
    return linea or "127.0.0.1"


def pedir(base, endpoint):
    with urllib.request.urlopen(base + endpoint, timeout=ESPERA) as r:
        return r.read().decode("latin-1")


def numeros_de_juegos(base):
    """{game key: (type, [animal numbers])} from the games section of sorteospremiar3.php."""
    juegos = {}
    texto = pedir(base, "sorteospremiar3.php")
    seccion = texto.split("_FIN_")[0]
    for linea in seccion.split("\n"):
        campos = linea.split(";")
        if len(campos) < 6 or not campos[0]:
            continue
        numeros = [n for n in campos[3].split(",") if n]
        juegos[campos[0]] = (campos[5], numeros)
    return juegos


def elegir(tipo, numeros):
    if tipo == "A" and numeros:
        return random.choice(numeros)
    return "%03d" % random.randint(0, 999)


def escribir_atomico(ruta, texto):
    temporal = ruta + ".tmp"
    with open(temporal, "w", encoding="latin-1", newline="\n") as f:
        f.write(texto)
        f.flush()
        os.fsync(f.fileno())
    os.replace(temporal, ruta)


def main():
    base = url_base(leer_servidor())
    try:
        pendientes = pedir(base, "sorteospendientes.php?&g=" + NOMBRE).split("\n")
    except Exception as e:  # no server: nothing to do this time
        print("sin respuesta del servidor:", e, file=sys.stderr)
        return 1
    fecha = pendientes[0].strip()
    sorteos = [l.split(",") for l in pendientes[1:] if l.strip()]
    if not fecha or not sorteos:
        return 0
    try:
        juegos = numeros_de_juegos(base)
    except Exception as e:
        print("sin respuesta del servidor:", e, file=sys.stderr)
        return 1
    lineas = [fecha]
    for campos in sorteos:
        if len(campos) < 2:
            continue
        juego, sorteo = campos[0], campos[1]
        tipo, numeros = juegos.get(juego, ("N", []))
        lineas.append("%s,%s,%s" % (juego, sorteo, elegir(tipo, numeros)))
    if len(lineas) > 1:
        escribir_atomico(ARCHIVO, "\n".join(lineas) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
