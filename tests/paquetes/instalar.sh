#!/usr/bin/env bash
# Installs the two Debian packages on this machine with dpkg -i, checks what they put where,
# their dependencies, the console's launcher and the server's unit, starts the unit's own
# command by hand on a temporary database and logs in over HTTP; then purges both packages and
# removes the system user if it was created here, leaving the machine as it was.
#
#     tests/paquetes/instalar.sh [tornavo-su_*.deb tornavo-servidor_*.deb]
#
# Without arguments it takes the packages from build-paquetes/ (scripts/paquetes-deb).
# It installs into the real system, so it needs root and refuses to run where either package
# is installed already. CI runs it on its throwaway machine after scripts/paquetes-deb.
set -euo pipefail
RAIZ="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"

fallos=0
ok() { echo "ok      $*"; }
mal() {
    echo "FALLA   $*" >&2
    fallos=$((fallos + 1))
}
# comprobar <description> <command...>: passes when the command succeeds.
comprobar() {
    local texto="$1"
    shift
    if "$@"; then ok "$texto"; else mal "$texto"; fi
}
abortar() {
    echo "FALLA   $*" >&2
    exit 1
}

if [ $# -eq 2 ]; then
    CONSOLA_DEB="$1"
    SERVIDOR_DEB="$2"
else
    CONSOLA_DEB="$(ls "$RAIZ"/build-paquetes/tornavo-su_*.deb 2>/dev/null | head -n 1)"
    SERVIDOR_DEB="$(ls "$RAIZ"/build-paquetes/tornavo-servidor_*.deb 2>/dev/null | head -n 1)"
fi
[ -f "$CONSOLA_DEB" ] && [ -f "$SERVIDOR_DEB" ] ||
    abortar "no están los paquetes; constrúyalos con scripts/paquetes-deb"
[ "$(id -u)" -eq 0 ] || abortar "instala paquetes en el sistema: hay que ejecutarla como root"
for p in tornavo-su tornavo-servidor; do
    if dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "installed"; then
        abortar "$p ya está instalado en esta máquina; esta prueba no lo toca"
    fi
done

USUARIO=tornavo
USUARIO_PREVIO=0
getent passwd "$USUARIO" >/dev/null && USUARIO_PREVIO=1
TMP="$(mktemp -d)"
chmod 755 "$TMP"
SERVIDOR_PID=""
CONSOLA_PID=""
limpiar() {
    [ -n "$CONSOLA_PID" ] && kill "$CONSOLA_PID" 2>/dev/null || true
    [ -n "$SERVIDOR_PID" ] && kill "$SERVIDOR_PID" 2>/dev/null || true
    wait 2>/dev/null || true
    dpkg --purge tornavo-su tornavo-servidor >/dev/null 2>&1 || true
    if [ "$USUARIO_PREVIO" = 0 ] && getent passwd "$USUARIO" >/dev/null; then
        userdel "$USUARIO" >/dev/null 2>&1 || true
        getent group "$USUARIO" >/dev/null && groupdel "$USUARIO" >/dev/null 2>&1 || true
    fi
    rm -rf "$TMP"
}
trap limpiar EXIT

# --- Installation: dpkg itself refuses a package whose dependencies are not there.
dpkg -i "$CONSOLA_DEB" "$SERVIDOR_DEB" >"$TMP/dpkg.log" 2>&1 || {
    cat "$TMP/dpkg.log" >&2
    abortar "dpkg -i"
}
for p in tornavo-su tornavo-servidor; do
    comprobar "$p instalado" test "$(dpkg-query -W -f='${Status}' "$p")" = "install ok installed"
done

# --- Dependencies: the libraries the binaries link, plus the declared ones.
depende() { dpkg-query -W -f='${Depends}' "$1" | tr ',|' '\n\n' | grep -c "^ *$2" >/dev/null; }
for d in qttranslations5-l10n libqt5widgets5 libqt5network5 libqt5core5a libc6; do
    comprobar "tornavo-su depende de $d" depende tornavo-su "$d"
done
for d in adduser libsqlite3-0 libsodium23 libcpp-httplib libc6; do
    comprobar "tornavo-servidor depende de $d" depende tornavo-servidor "$d"
done
for b in /usr/bin/tornavo-su /usr/bin/tornavo-servidor; do
    comprobar "$b encuentra todas sus bibliotecas" bash -c "! ldd $b | grep -q 'not found'"
done

# --- Files of the console.
comprobar "/usr/bin/tornavo-su ejecutable" test -x /usr/bin/tornavo-su
comprobar "/usr/bin/tornavo-su-escritorio ejecutable" test -x /usr/bin/tornavo-su-escritorio
ESCRITORIO=/usr/share/applications/tornavo-su.desktop
comprobar "entrada de escritorio" test -f "$ESCRITORIO"
comprobar "entrada en español" grep -qx 'GenericName=Administración de loterías' "$ESCRITORIO"
comprobar "la entrada arranca el lanzador" grep -qx 'Exec=tornavo-su-escritorio' "$ESCRITORIO"
comprobar "la entrada usa el icono del programa" grep -qx 'Icon=tornavo-su' "$ESCRITORIO"
comprobar "icono en hicolor" test -s /usr/share/icons/hicolor/256x256/apps/tornavo-su.png
comprobar "icono escalable en hicolor" test -s /usr/share/icons/hicolor/scalable/apps/tornavo-su.svg
comprobar "guion de resultados de demostración" test -s /usr/share/tornavo-su/resultados_demo.py
for juego in "Fauna Activa" "Selva Dorada" "Rancho Feliz"; do
    comprobar "imágenes de $juego" test -s "/usr/share/tornavo-su/animales/$juego/00.png"
done
comprobar "páginas de manual" test -s /usr/share/man/man1/tornavo-su.1.gz -a -s /usr/share/man/man1/tornavo-servidor.1.gz
comprobar "copyright" test -s /usr/share/doc/tornavo-su/copyright -a -s /usr/share/doc/tornavo-servidor/copyright

# --- Files of the server: the unit, its user and its folder.
UNIDAD=/lib/systemd/system/tornavo-servidor.service
comprobar "unidad de systemd" test -f "$UNIDAD"
for linea in "User=$USUARIO" "NoNewPrivileges=yes" "ProtectSystem=strict" \
    "ReadWritePaths=/var/lib/tornavo" "PrivateTmp=yes"; do
    comprobar "unidad: $linea" grep -qx "$linea" "$UNIDAD"
done
comprobar "usuario de sistema $USUARIO" test "$(getent passwd "$USUARIO" | cut -d: -f3)" -lt 1000
comprobar "/var/lib/tornavo de $USUARIO" test "$(stat -c %U /var/lib/tornavo 2>/dev/null)" = "$USUARIO"

# --- The launcher: a per-user folder with what the console reads, the console started there.
CASA="$TMP/casa"
mkdir -p "$CASA"
env -i HOME="$CASA" PATH=/usr/bin:/bin QT_QPA_PLATFORM=offscreen \
    /usr/bin/tornavo-su-escritorio >"$TMP/consola.log" 2>&1 &
CONSOLA_PID=$!
CARPETA="$CASA/.local/share/tornavo-su"
for _ in $(seq 1 200); do
    [ "$(readlink "/proc/$CONSOLA_PID/exe" 2>/dev/null)" = /usr/bin/tornavo-su ] && break
    sleep 0.1
done
comprobar "el lanzador arranca la consola" test "$(readlink "/proc/$CONSOLA_PID/exe" 2>/dev/null)" = /usr/bin/tornavo-su
comprobar "la consola corre en la carpeta del usuario" test "$(readlink "/proc/$CONSOLA_PID/cwd" 2>/dev/null)" = "$CARPETA"
kill "$CONSOLA_PID" 2>/dev/null || true
wait "$CONSOLA_PID" 2>/dev/null || true
CONSOLA_PID=""
comprobar "Tornavo.svr apunta al servidor local" test "$(head -n 1 "$CARPETA/Tornavo.svr" 2>/dev/null)" = "127.0.0.1:8080"
comprobar "guion de resultados en la carpeta" test -s "$CARPETA/resultados_demo.py"
comprobar "imágenes en animales/<juego>/" test -s "$CARPETA/animales/Fauna Activa/7.png"
# A second start keeps what the user changed.
echo "servidor.ejemplo:8443" >"$CARPETA/Tornavo.svr"
env -i HOME="$CASA" PATH=/usr/bin:/bin QT_QPA_PLATFORM=offscreen \
    timeout 3 /usr/bin/tornavo-su-escritorio >/dev/null 2>&1 || true
comprobar "el lanzador no cambia el Tornavo.svr del usuario" test "$(head -n 1 "$CARPETA/Tornavo.svr")" = "servidor.ejemplo:8443"

# --- The server: the unit's own command, by hand, as its user, on a temporary database.
EXEC="$(sed -n 's/^ExecStart=//p' "$UNIDAD")"
read -r -a ORDEN <<<"$EXEC"
comprobar "el servicio escucha solo en 127.0.0.1" bash -c "[[ ' ${ORDEN[*]} ' == *' --bind 127.0.0.1 '* ]]"
BASE="$TMP/estado"
install -d -o "$USUARIO" -g "$USUARIO" -m 0750 "$BASE"
for i in "${!ORDEN[@]}"; do
    case "${ORDEN[$i]}" in
    --db) ORDEN[i + 1]="$BASE/tornavo.db" ;;
    --port) ORDEN[i + 1]=0 ;; # a free port: this machine may be running anything on 8080
    esac
done
setpriv --reuid="$USUARIO" --regid="$USUARIO" --init-groups -- "${ORDEN[@]}" >"$TMP/servidor.url" 2>"$TMP/servidor.log" &
SERVIDOR_PID=$!
for _ in $(seq 1 1200); do
    [ -s "$TMP/servidor.url" ] && break
    kill -0 "$SERVIDOR_PID" 2>/dev/null || break
    sleep 0.1
done
URL="$(head -n 1 "$TMP/servidor.url")"
case "$URL" in
http://127.0.0.1:*/Tornavo/TornavoSU/) ok "el servidor arranca: $URL" ;;
*)
    cat "$TMP/servidor.log" >&2
    abortar "el servidor no arrancó (primera línea: '$URL')"
    ;;
esac
comprobar "la base es del usuario $USUARIO" test "$(stat -c %U "$BASE/tornavo.db" 2>/dev/null)" = "$USUARIO"
pedir() {
    python3 -c 'import sys, urllib.request
sys.stdout.write(urllib.request.urlopen(sys.argv[1], timeout=60).read().decode("latin-1"))' "$URL$1"
}
RESPUESTA="$(pedir 'validarUser.php?u=admin&p=tornavo1')"
comprobar "admin inicia sesión (1, con acceso X)" \
    test "$(sed -n '1p;3p' <<<"$RESPUESTA" | tr '\n' ' ')" = "1 X "
comprobar "clave equivocada: 0" test "$(pedir 'validarUser.php?u=admin&p=otra')" = "0"
kill "$SERVIDOR_PID"
estado=0
wait "$SERVIDOR_PID" 2>/dev/null || estado=$?
comprobar "el servidor termina bien con SIGTERM" test "$estado" -eq 0
SERVIDOR_PID=""

# --- Purge: nothing of the packages stays but the system user (removed by limpiar if new).
dpkg --purge tornavo-su tornavo-servidor >"$TMP/dpkg.log" 2>&1 || {
    cat "$TMP/dpkg.log" >&2
    mal "dpkg --purge"
}
comprobar "purgado: sin consola" test ! -e /usr/bin/tornavo-su
comprobar "purgado: sin /var/lib/tornavo" test ! -e /var/lib/tornavo

if [ "$fallos" -ne 0 ]; then
    echo "$fallos comprobaciones fallaron" >&2
    exit 1
fi
echo "Paquetes: todas las comprobaciones pasaron."
