#include "servidor/esquema.h"

#include "servidor/basedatos.h"

namespace servidor {

namespace {

// Version 1: the whole back office. Amounts are whole cents; numbers played and results are
// text, because "0" and "00" are different animals.
const char *const esquemaV1 = R"SQL(
CREATE TABLE superbancas(
    id INTEGER PRIMARY KEY,
    codigo TEXT NOT NULL UNIQUE,
    nombre TEXT NOT NULL);
CREATE TABLE bancas(
    id INTEGER PRIMARY KEY,
    codigo TEXT NOT NULL UNIQUE,
    nombre TEXT NOT NULL,
    superbanca_id INTEGER REFERENCES superbancas(id),
    activa INTEGER NOT NULL DEFAULT 1);
CREATE TABLE jefes(
    id INTEGER PRIMARY KEY,
    banca_id INTEGER NOT NULL REFERENCES bancas(id),
    codigo TEXT NOT NULL,
    nombre TEXT NOT NULL,
    UNIQUE(banca_id, codigo));
CREATE TABLE agencias(
    id INTEGER PRIMARY KEY,
    jefe_id INTEGER NOT NULL REFERENCES jefes(id),
    codigo TEXT NOT NULL,
    nombre TEXT NOT NULL,
    UNIQUE(jefe_id, codigo));
CREATE TABLE taquillas(
    id INTEGER PRIMARY KEY,
    agencia_id INTEGER NOT NULL REFERENCES agencias(id),
    codigo TEXT NOT NULL,
    nombre TEXT NOT NULL,
    UNIQUE(agencia_id, codigo));
CREATE TABLE juegos(
    id INTEGER PRIMARY KEY,
    clave TEXT NOT NULL UNIQUE,
    nombre TEXT NOT NULL,
    tipo TEXT NOT NULL CHECK(tipo IN ('A', 'N', 'T')),
    sin_nombres TEXT NOT NULL DEFAULT '',
    automatico TEXT NOT NULL DEFAULT '',
    script TEXT NOT NULL DEFAULT '',
    activo INTEGER NOT NULL DEFAULT 1);
CREATE TABLE animales(
    juego_id INTEGER NOT NULL REFERENCES juegos(id),
    orden INTEGER NOT NULL,
    numero TEXT NOT NULL,
    nombre TEXT NOT NULL,
    PRIMARY KEY(juego_id, numero));
CREATE TABLE sorteos(
    id INTEGER PRIMARY KEY,
    juego_id INTEGER NOT NULL REFERENCES juegos(id),
    clave TEXT NOT NULL,
    etiqueta TEXT NOT NULL,
    hora TEXT NOT NULL,
    activo INTEGER NOT NULL DEFAULT 1,
    divisor INTEGER NOT NULL CHECK(divisor > 0),
    dividendo INTEGER NOT NULL CHECK(dividendo >= 0),
    UNIQUE(juego_id, clave));
CREATE TABLE comisiones_agencia(
    agencia_id INTEGER NOT NULL REFERENCES agencias(id),
    juego_id INTEGER NOT NULL REFERENCES juegos(id),
    porcentaje REAL NOT NULL,
    PRIMARY KEY(agencia_id, juego_id));
CREATE TABLE comisiones_banca(
    banca_id INTEGER NOT NULL REFERENCES bancas(id),
    juego_id INTEGER NOT NULL REFERENCES juegos(id),
    comision REAL NOT NULL,
    participacion REAL NOT NULL,
    PRIMARY KEY(banca_id, juego_id));
CREATE TABLE usuarios(
    id INTEGER PRIMARY KEY,
    usuario TEXT NOT NULL UNIQUE,
    clave_hash TEXT NOT NULL,
    nombre TEXT NOT NULL,
    acceso TEXT NOT NULL DEFAULT '',
    opciones TEXT NOT NULL DEFAULT '',
    juegos TEXT NOT NULL DEFAULT '',
    bancas TEXT NOT NULL DEFAULT '',
    superbanca TEXT NOT NULL DEFAULT '',
    juegos_reporte TEXT NOT NULL DEFAULT '');
CREATE TABLE tickets(
    id INTEGER PRIMARY KEY,
    taquilla_id INTEGER NOT NULL REFERENCES taquillas(id),
    fecha TEXT NOT NULL,
    hora TEXT NOT NULL,
    numero INTEGER NOT NULL,
    serial TEXT NOT NULL,
    UNIQUE(taquilla_id, fecha, numero));
CREATE TABLE jugadas(
    id INTEGER PRIMARY KEY,
    ticket_id INTEGER NOT NULL REFERENCES tickets(id),
    sorteo_id INTEGER NOT NULL REFERENCES sorteos(id),
    fecha TEXT NOT NULL,
    hora TEXT NOT NULL,
    numero TEXT NOT NULL,
    monto INTEGER NOT NULL CHECK(monto > 0),
    eliminada INTEGER NOT NULL DEFAULT 0,
    pagada INTEGER NOT NULL DEFAULT 0);
CREATE INDEX jugadas_sorteo ON jugadas(sorteo_id, fecha, numero);
CREATE INDEX jugadas_fecha ON jugadas(fecha);
CREATE INDEX tickets_taquilla ON tickets(taquilla_id);
CREATE TABLE resultados(
    id INTEGER PRIMARY KEY,
    sorteo_id INTEGER NOT NULL REFERENCES sorteos(id),
    fecha TEXT NOT NULL,
    resultado TEXT NOT NULL,
    hora TEXT NOT NULL,
    usuario TEXT NOT NULL DEFAULT '',
    UNIQUE(sorteo_id, fecha));
CREATE TABLE premios(
    id INTEGER PRIMARY KEY,
    resultado_id INTEGER NOT NULL REFERENCES resultados(id) ON DELETE CASCADE,
    jugada_id INTEGER NOT NULL UNIQUE REFERENCES jugadas(id),
    monto INTEGER NOT NULL);
CREATE INDEX premios_resultado ON premios(resultado_id);
CREATE TABLE sesiones(
    direccion TEXT PRIMARY KEY,
    usuario TEXT NOT NULL,
    momento TEXT NOT NULL);
CREATE TABLE auditoria(
    id INTEGER PRIMARY KEY,
    momento TEXT NOT NULL,
    direccion TEXT NOT NULL,
    usuario TEXT NOT NULL,
    accion TEXT NOT NULL,
    detalle TEXT NOT NULL);
-- The audit log only grows.
CREATE TRIGGER auditoria_sin_cambios BEFORE UPDATE ON auditoria
BEGIN SELECT RAISE(ABORT, 'la auditoria no se modifica'); END;
CREATE TRIGGER auditoria_sin_borrado BEFORE DELETE ON auditoria
BEGIN SELECT RAISE(ABORT, 'la auditoria no se borra'); END;
-- No sale for a draw whose result is out.
CREATE TRIGGER jugadas_sin_resultado BEFORE INSERT ON jugadas
WHEN EXISTS (SELECT 1 FROM resultados r WHERE r.sorteo_id = NEW.sorteo_id AND r.fecha = NEW.fecha)
BEGIN SELECT RAISE(ABORT, 'el sorteo ya tiene resultado'); END;
)SQL";

// Version 2: animal numbers as the console types them ("01" .. "09", padded like every
// number above 0), the digit count of number games, sessions kept in memory only, sales closed
// at the draw's time, and the per-day sales summary the reports read.
const char *const migracionV2 = R"SQL(
ALTER TABLE juegos ADD COLUMN cifras INTEGER NOT NULL DEFAULT 3 CHECK(cifras BETWEEN 1 AND 9);
-- "1" .. "9" become "01" .. "09" in the animal games: their list, plays and results. A
-- number whose padded form already exists in the game is left alone.
UPDATE animales SET numero = '0' || numero
 WHERE length(numero) = 1 AND numero GLOB '[1-9]'
   AND juego_id IN (SELECT id FROM juegos WHERE tipo = 'A')
   AND NOT EXISTS (SELECT 1 FROM animales a2
                    WHERE a2.juego_id = animales.juego_id AND a2.numero = '0' || animales.numero);
UPDATE jugadas SET numero = '0' || numero
 WHERE length(numero) = 1 AND numero GLOB '[1-9]'
   AND sorteo_id IN (SELECT s.id FROM sorteos s JOIN juegos j ON j.id = s.juego_id
                      WHERE j.tipo = 'A');
UPDATE resultados SET resultado = '0' || resultado
 WHERE length(resultado) = 1 AND resultado GLOB '[1-9]'
   AND sorteo_id IN (SELECT s.id FROM sorteos s JOIN juegos j ON j.id = s.juego_id
                      WHERE j.tipo = 'A');
-- Sessions live in the server's memory: a restart ends them all.
DROP TABLE sesiones;
-- No sale at or after the draw's time.
CREATE TRIGGER jugadas_antes_del_sorteo BEFORE INSERT ON jugadas
WHEN NEW.hora >= (SELECT hora FROM sorteos WHERE id = NEW.sorteo_id)
BEGIN SELECT RAISE(ABORT, 'el sorteo ya cerro sus ventas'); END;
-- The monitor reads one draw's plays by time of sale from this index alone (it holds every
-- column the monitor shows), in the order of its reply.
CREATE INDEX jugadas_sorteo_hora
    ON jugadas(sorteo_id, fecha, hora, ticket_id, id, numero, monto, eliminada, pagada);
)SQL";

// Version 3: the sales of each day per ticket office and game, kept by triggers, so that the
// reports over a month read thousands of summary rows instead of millions of plays. Plays are
// never deleted, only marked: the triggers follow new plays, marks and amounts, and prizes
// awarded or withdrawn.
const char *const migracionV3 = R"SQL(
CREATE TABLE ventas_resumen(
    fecha TEXT NOT NULL,
    taquilla_id INTEGER NOT NULL,
    juego_id INTEGER NOT NULL,
    ventas INTEGER NOT NULL,
    premios INTEGER NOT NULL,
    ultima TEXT,
    PRIMARY KEY(fecha, taquilla_id, juego_id)) WITHOUT ROWID;
CREATE INDEX jugadas_ticket ON jugadas(ticket_id);
INSERT INTO ventas_resumen(fecha, taquilla_id, juego_id, ventas, premios, ultima)
SELECT jg.fecha, t.taquilla_id, s.juego_id, SUM(jg.monto), SUM(COALESCE(p.monto, 0)),
       MAX(jg.hora)
  FROM jugadas jg JOIN tickets t ON t.id = jg.ticket_id JOIN sorteos s ON s.id = jg.sorteo_id
  LEFT JOIN premios p ON p.jugada_id = jg.id
 WHERE jg.eliminada = 0
 GROUP BY jg.fecha, t.taquilla_id, s.juego_id;
CREATE TRIGGER resumen_jugada AFTER INSERT ON jugadas WHEN NEW.eliminada = 0
BEGIN
    INSERT INTO ventas_resumen(fecha, taquilla_id, juego_id, ventas, premios, ultima)
    SELECT NEW.fecha, t.taquilla_id, s.juego_id, NEW.monto, 0, NEW.hora
      FROM tickets t, sorteos s WHERE t.id = NEW.ticket_id AND s.id = NEW.sorteo_id
    ON CONFLICT(fecha, taquilla_id, juego_id) DO UPDATE
       SET ventas = ventas + excluded.ventas, ultima = max(ultima, excluded.ultima);
END;
CREATE TRIGGER resumen_jugada_cambiada AFTER UPDATE OF eliminada, monto ON jugadas
WHEN OLD.eliminada <> NEW.eliminada OR OLD.monto <> NEW.monto
BEGIN
    INSERT OR IGNORE INTO ventas_resumen(fecha, taquilla_id, juego_id, ventas, premios, ultima)
    SELECT NEW.fecha, t.taquilla_id, s.juego_id, 0, 0, NULL
      FROM tickets t, sorteos s WHERE t.id = NEW.ticket_id AND s.id = NEW.sorteo_id;
    UPDATE ventas_resumen
       SET ventas = ventas - (CASE WHEN OLD.eliminada = 0 THEN OLD.monto ELSE 0 END)
                           + (CASE WHEN NEW.eliminada = 0 THEN NEW.monto ELSE 0 END),
           premios = premios + ((NEW.eliminada = 0) - (OLD.eliminada = 0)) *
                     COALESCE((SELECT monto FROM premios WHERE jugada_id = NEW.id), 0),
           ultima = (SELECT MAX(jg.hora) FROM tickets t JOIN jugadas jg ON jg.ticket_id = t.id
                       JOIN sorteos s ON s.id = jg.sorteo_id
                      WHERE t.taquilla_id = ventas_resumen.taquilla_id
                        AND t.fecha = ventas_resumen.fecha AND jg.fecha = ventas_resumen.fecha
                        AND s.juego_id = ventas_resumen.juego_id AND jg.eliminada = 0)
     WHERE (fecha, taquilla_id, juego_id) =
           (SELECT NEW.fecha, t.taquilla_id, s.juego_id FROM tickets t, sorteos s
             WHERE t.id = NEW.ticket_id AND s.id = NEW.sorteo_id);
END;
CREATE TRIGGER resumen_premio AFTER INSERT ON premios
BEGIN
    UPDATE ventas_resumen SET premios = premios + NEW.monto
     WHERE (fecha, taquilla_id, juego_id) =
           (SELECT jg.fecha, t.taquilla_id, s.juego_id FROM jugadas jg
              JOIN tickets t ON t.id = jg.ticket_id JOIN sorteos s ON s.id = jg.sorteo_id
             WHERE jg.id = NEW.jugada_id AND jg.eliminada = 0);
END;
CREATE TRIGGER resumen_premio_retirado AFTER DELETE ON premios
BEGIN
    UPDATE ventas_resumen SET premios = premios - OLD.monto
     WHERE (fecha, taquilla_id, juego_id) =
           (SELECT jg.fecha, t.taquilla_id, s.juego_id FROM jugadas jg
              JOIN tickets t ON t.id = jg.ticket_id JOIN sorteos s ON s.id = jg.sorteo_id
             WHERE jg.id = OLD.jugada_id AND jg.eliminada = 0);
END;
)SQL";

int versionActual(sqlite3 *db)
{
    Sentencia st(db, "PRAGMA user_version");
    return st.paso() ? static_cast<int>(st.entero(0)) : 0;
}

} // namespace

void prepararEsquema(sqlite3 *db)
{
    sqlite3_busy_timeout(db, 10000);
    ejecutarSql(db, "PRAGMA journal_mode=WAL");
    ejecutarSql(db, "PRAGMA foreign_keys=ON");
    ejecutarSql(db, "PRAGMA synchronous=NORMAL");
    if (versionActual(db) < 1) {
        Transaccion t(db);
        // Read again under the write lock: another process may have created it meanwhile.
        if (versionActual(db) < 1) {
            ejecutarSql(db, esquemaV1);
            ejecutarSql(db, "PRAGMA user_version=1");
        }
        t.confirmar();
    }
    if (versionActual(db) < 2) {
        Transaccion t(db);
        if (versionActual(db) < 2) {
            ejecutarSql(db, migracionV2);
            ejecutarSql(db, "PRAGMA user_version=2");
        }
        t.confirmar();
    }
    if (versionActual(db) < 3) {
        Transaccion t(db);
        if (versionActual(db) < 3) {
            ejecutarSql(db, migracionV3);
            ejecutarSql(db, "PRAGMA user_version=3");
        }
        t.confirmar();
    }
    // Later versions add their steps here, each in its own transaction.
}

} // namespace servidor
