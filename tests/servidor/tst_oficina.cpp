// The back office without sockets: every endpoint's reply layout, the prize arithmetic,
// publish/undo, concurrent publishes, the access rule and hostile query values, on a
// temporary database with a fixed clock (2026-11-22 14:05:00).
#include "servidor/basedatos.h"
#include "servidor/compresion.h"
#include "servidor/demo.h"
#include "servidor/oficina.h"
#include "servidor/texto.h"

#include "tests/soporte/prueba_main.h"

#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTemporaryDir>
#include <QTest>

#include <httplib.h>
#include <zlib.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace servidor;

namespace {

const char *const hoy = "2026-11-22";
const char *const ayer = "2026-11-21";
const char *const aqui = "10.0.0.8";  // the address that logs in
const char *const otra = "10.0.0.99"; // an address that never logged in

// The tests' clock: today at `horaPrueba`, which a test moves forward to reach a draw's time.
std::string horaPrueba = "14:05:00";

Momento relojFijo()
{
    return {hoy, horaPrueba};
}

// Sets the clock for one test and puts it back afterwards.
struct HoraDePrueba {
    explicit HoraDePrueba(const std::string &hora) : anterior(horaPrueba) { horaPrueba = hora; }
    ~HoraDePrueba() { horaPrueba = anterior; }
    std::string anterior;
};

std::vector<std::string> lineas(const std::string &r)
{
    std::vector<std::string> v = partir(r, '\n');
    if (!v.empty() && v.back().empty())
        v.pop_back();
    return v;
}

long long contar(Oficina &o, const std::string &sql)
{
    long long n = -1;
    o.conConexion([&](sqlite3 *db) {
        Sentencia st(db, sql.c_str());
        if (st.paso())
            n = st.entero(0);
    });
    return n;
}

std::string textoSql(Oficina &o, const std::string &sql)
{
    std::string t;
    o.conConexion([&](sqlite3 *db) {
        Sentencia st(db, sql.c_str());
        if (st.paso())
            t = st.texto(0);
    });
    return t;
}

// Count of rows of every business table, to see that nothing changed.
std::string huella(Oficina &o)
{
    std::string h;
    for (const char *t : {"superbancas", "bancas", "jefes", "agencias", "taquillas", "juegos",
                          "animales", "sorteos", "comisiones_agencia", "comisiones_banca",
                          "usuarios", "tickets", "jugadas", "resultados", "premios"})
        h += std::string(t) + "=" +
             std::to_string(contar(o, std::string("SELECT COUNT(*) FROM ") + t)) + " ";
    h += "montos=" + textoSql(o, "SELECT COALESCE(SUM(monto),0) || '/' || "
                                 "COALESCE(SUM(eliminada),0) FROM jugadas");
    h += " res=" + textoSql(o, "SELECT group_concat(resultado) FROM resultados");
    return h;
}

// True when the daily sales summary holds exactly what the plays and prizes say.
bool resumenCuadra(Oficina &o)
{
    const std::string crudo =
        "SELECT jg.fecha, t.taquilla_id, s.juego_id, SUM(jg.monto), SUM(COALESCE(p.monto, 0)), "
        "MAX(jg.hora) FROM jugadas jg JOIN tickets t ON t.id = jg.ticket_id "
        "JOIN sorteos s ON s.id = jg.sorteo_id LEFT JOIN premios p ON p.jugada_id = jg.id "
        "WHERE jg.eliminada = 0 GROUP BY 1, 2, 3";
    const std::string resumen = "SELECT fecha, taquilla_id, juego_id, ventas, premios, ultima "
                                "FROM ventas_resumen WHERE ventas <> 0 OR premios <> 0";
    return contar(o, "SELECT COUNT(*) FROM (" + crudo + " EXCEPT " + resumen + ")") == 0 &&
           contar(o, "SELECT COUNT(*) FROM (" + resumen + " EXCEPT " + crudo + ")") == 0;
}

// "1250.00" -> 125000, whatever the locale (std::stod follows it, and Qt sets the user's).
long long centimos(const std::string &monto)
{
    long long entero = 0, decimales = 0;
    int cifras = -1;
    bool negativo = false;
    for (const char c : monto) {
        if (c == '-')
            negativo = true;
        else if (c == '.')
            cifras = 0;
        else if (c >= '0' && c <= '9' && cifras < 0)
            entero = entero * 10 + (c - '0');
        else if (c >= '0' && c <= '9' && cifras < 2)
            decimales = decimales * 10 + (c - '0'), ++cifras;
    }
    while (cifras >= 0 && cifras < 2)
        decimales *= 10, ++cifras;
    const long long total = entero * 100 + decimales;
    return negativo ? -total : total;
}

// A gzip body read back with zlib, which must find one member that ends exactly where the
// body does; "<mal>" otherwise.
std::string descomprimir(const std::string &z)
{
    z_stream s{};
    if (inflateInit2(&s, 15 + 16) != Z_OK)
        return "<mal>";
    std::string texto;
    char trozo[1 << 16];
    s.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(z.data()));
    s.avail_in = static_cast<uInt>(z.size());
    int rc = Z_OK;
    while (rc == Z_OK) {
        s.next_out = reinterpret_cast<Bytef *>(trozo);
        s.avail_out = sizeof trozo;
        rc = inflate(&s, Z_NO_FLUSH);
        texto.append(trozo, sizeof trozo - s.avail_out);
    }
    const bool bien = rc == Z_STREAM_END && s.avail_in == 0;
    inflateEnd(&s);
    return bien ? texto : "<mal>";
}

long long primeraTaquilla(Oficina &o)
{
    return contar(o, "SELECT MIN(id) FROM taquillas");
}

} // namespace

class PruebaOficina : public QObject {
    Q_OBJECT
public:
    static int correrEscenario(const QString &) { return 2; }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Oficina> m_demo;  // small demo network with sales
    std::unique_ptr<Oficina> m_vacia; // same network, no sales: the arithmetic is ours

    std::string pedir(Oficina &o, const std::string &endpoint, const std::string &consulta,
                      const std::string &direccion = aqui)
    {
        return o.atenderConsulta(endpoint, consulta, direccion);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_demo = std::make_unique<Oficina>(m_dir.filePath("demo.db").toStdString());
        m_demo->fijarReloj(relojFijo);
        OpcionesDemo op;
        op.agencias = 24;
        op.jugadasHoy = 4000;
        op.diasPrevios = 1;
        op.jugadasDiaPrevio = 600;
        QVERIFY(crearDemo(*m_demo, relojFijo(), op));
        QCOMPARE(pedir(*m_demo, "validarUser.php", "u=admin&p=tornavo1").substr(0, 2),
                 std::string("1\n"));

        m_vacia = std::make_unique<Oficina>(m_dir.filePath("vacia.db").toStdString());
        m_vacia->fijarReloj(relojFijo);
        OpcionesDemo sinVentas;
        sinVentas.agencias = 4;
        sinVentas.jugadasHoy = 0;
        sinVentas.diasPrevios = 0;
        // Created before the first draw of the day: no result, no sale.
        QVERIFY(crearDemo(*m_vacia, Momento{hoy, "07:00:00"}, sinVentas));
        QCOMPARE(contar(*m_vacia, "SELECT COUNT(*) FROM resultados"), 0LL);
        QCOMPARE(pedir(*m_vacia, "validarUser.php", "u=admin&p=tornavo1").substr(0, 2),
                 std::string("1\n"));
    }

    // ---- text helpers --------------------------------------------------------------------

    void consultas()
    {
        Parametros p = leerConsulta("&f=2026-11-22&j=1");
        QCOMPARE(p.size(), size_t(2));
        QCOMPARE(p["f"], std::string("2026-11-22"));
        QCOMPARE(p["j"], std::string("1"));
        p = leerConsulta("?u=ad%6Din&p=a+b%2Bc&&x");
        QCOMPARE(p["u"], std::string("admin"));
        QCOMPARE(p["p"], std::string("a+b+c"));
        QCOMPARE(p["x"], std::string(""));
        // A raw Latin-1 byte is taken as Latin-1; broken escapes stay as they are.
        p = leerConsulta("u=Delf%EDn&a=%&b=%4&c=%zz");
        QCOMPARE(p["u"], std::string("Delf\xC3\xADn"));
        QCOMPARE(p["a"], std::string("%"));
        QCOMPARE(p["b"], std::string("%4"));
        QCOMPARE(p["c"], std::string("%zz"));
        QCOMPARE(leerConsulta("j=1&j=2")["j"], std::string("2"));
    }

    void textos()
    {
        QCOMPARE(utf8ALatin1("Delf\xC3\xADn"), std::string("Delf\xEDn"));
        QCOMPARE(utf8ALatin1("\xE2\x82\xAC"), std::string("?"));
        QCOMPARE(utf8ALatin1("\xC3"), std::string("?"));
        // After eight or more plain bytes, and a text cut after a line break converts as whole.
        QCOMPARE(utf8ALatin1("Lotto Activo: Delf\xC3\xADn\xE2\x82\xAC"),
                 std::string("Lotto Activo: Delf\xEDn?"));
        std::string dos = "0123456789\xC3\xB1\nabcdefghij\xC3\x91\n";
        const size_t corte = dos.find('\n') + 1;
        const size_t n1 = utf8ALatin1EnSitio(&dos[0], corte);
        const size_t n2 = utf8ALatin1EnSitio(&dos[corte], dos.size() - corte);
        QCOMPARE(dos.substr(0, n1) + dos.substr(corte, n2),
                 utf8ALatin1("0123456789\xC3\xB1\nabcdefghij\xC3\x91\n"));
        QCOMPARE(dos.substr(0, n1), std::string("0123456789\xF1\n"));
        QCOMPARE(montoTexto(125000), std::string("1250.00"));
        QCOMPARE(montoTexto(5), std::string("0.05"));
        QCOMPARE(montoTexto(-250), std::string("-2.50"));
        QCOMPARE(centimos("1250.00"), 125000LL);
        QCOMPARE(centimos("-2.5"), -250LL);
        QCOMPARE(porcentajeTexto(12.5), std::string("12.50"));
        QCOMPARE(porcentajeTexto(10), std::string("10.00"));
        QCOMPARE(porcentajeTexto(-0.25), std::string("-0.25"));
        QCOMPARE(campo("a,b;c\nd"), std::string("a b c d"));
        QCOMPARE(campo(std::string("a\0b\x01\x7F", 5)), std::string("a b  "));
        for (long long c : {0LL, 5LL, 99LL, 100LL, 125000LL, -250LL, -5LL, 123456789012LL}) {
            std::string t = "x";
            agregarMonto(t, c);
            QCOMPARE(t, "x" + montoTexto(c));
        }
        std::string t = "y";
        agregarCampo(t, std::string_view("a,b;c\n\0", 7));
        QCOMPARE(t, std::string("ya b c  "));
        QVERIFY(fechaValida("2024-02-29"));
        QVERIFY(!fechaValida("2026-02-29"));
        QVERIFY(!fechaValida("2026-11-22' --"));
        QVERIFY(horaValida("23:59:59"));
        QVERIFY(!horaValida("24:00:00"));
    }

    void compresion()
    {
        std::string texto;
        for (int i = 0; i < 200000; ++i)
            texto += "01,09:41:07,02,001,01," + std::to_string(i) + ",C1637FC9,00,25.00,0,,X\n";
        std::string z;
        QVERIFY(comprimirGzip(texto, z));
        QVERIFY(z.size() * 4 < texto.size());
        QCOMPARE(static_cast<unsigned char>(z[0]), static_cast<unsigned char>(0x1F));
        QCOMPARE(static_cast<unsigned char>(z[1]), static_cast<unsigned char>(0x8B));
        // Back again with zlib's gzip reader: the same bytes.
        z_stream s{};
        QCOMPARE(inflateInit2(&s, 15 + 16), Z_OK);
        std::string vuelta(texto.size() + 16, '\0');
        s.next_in = reinterpret_cast<Bytef *>(&z[0]);
        s.avail_in = static_cast<uInt>(z.size());
        s.next_out = reinterpret_cast<Bytef *>(&vuelta[0]);
        s.avail_out = static_cast<uInt>(vuelta.size());
        QCOMPARE(inflate(&s, Z_FINISH), Z_STREAM_END);
        vuelta.resize(s.total_out);
        inflateEnd(&s);
        QVERIFY(vuelta == texto);
        QVERIFY(comprimirGzip("", z));
        QVERIFY(!z.empty());

        // Stretches compressed apart, in any order, one of them empty, and joined in the order
        // of the text: one gzip member with the whole text.
        const std::string partes[3] = {texto.substr(0, 3000000), std::string(),
                                       texto.substr(3000000)};
        std::vector<TramoGzip> tramos(3);
        for (int i = 2; i >= 0; --i) {
            tramos[i].agregar(partes[i].data(), partes[i].size());
            tramos[i].terminar();
        }
        std::vector<TramoGzip *> enOrden = {&tramos[0], &tramos[1], &tramos[2]};
        z = unirGzip(enOrden);
        QVERIFY(z.size() * 4 < texto.size());
        QVERIFY(descomprimir(z) == texto);
        TramoGzip solo;
        solo.terminar();
        std::vector<TramoGzip *> uno = {&solo};
        QCOMPARE(descomprimir(unirGzip(uno)), std::string());
        // A stretch not ended yet gives nothing to send.
        TramoGzip abierto;
        abierto.agregar("abc", 3);
        std::vector<TramoGzip *> sinTerminar = {&abierto};
        QVERIFY(unirGzip(sinTerminar).empty());

        QVERIFY(ofreceGzip("gzip"));
        QVERIFY(ofreceGzip("gzip, deflate"));
        QVERIFY(ofreceGzip("deflate, gzip;q=0.5, br"));
        QVERIFY(ofreceGzip(" GZIP "));
        QVERIFY(!ofreceGzip("br"));
        QVERIFY(!ofreceGzip("gzip;q=0"));
        QVERIFY(!ofreceGzip("identity"));
        QVERIFY(!ofreceGzip(""));
    }

    // ---- login and access ----------------------------------------------------------------

    void login()
    {
        const std::string r =
            pedir(*m_demo, "validarUser.php", "u=operador&p=operador1", "10.1.1.1");
        const auto l = lineas(r);
        QCOMPARE(l.size(), size_t(8));
        QCOMPARE(l[0], std::string("1"));
        QCOMPARE(l[1], std::string("Operador de Turno"));
        QCOMPARE(l[2], std::string("X"));
        QCOMPARE(l[3], std::string("21,22,31"));
        QCOMPARE(l[4], std::string("1,4"));
        QCOMPARE(l[5], std::string("01,02"));
        QCOMPARE(l[6], std::string("SB01"));
        QCOMPARE(l[7], std::string("1,4"));
        const auto a = lineas(pedir(*m_demo, "validarUser.php", "u=admin&p=tornavo1", "10.1.1.2"));
        QCOMPARE(a[3], std::string("root"));
        QCOMPARE(a[4], std::string("root"));
        QCOMPARE(a[7], std::string("1,2,3,4"));

        QCOMPARE(pedir(*m_demo, "validarUser.php", "u=admin&p=tornavo2", "10.1.1.3"),
                 std::string("0\n"));
        QCOMPARE(pedir(*m_demo, "validarUser.php", "u=nadie&p=tornavo1", "10.1.1.3"),
                 std::string("0\n"));
        QCOMPARE(pedir(*m_demo, "validarUser.php", "", "10.1.1.3"), std::string("0\n"));
        // Every attempt is audited with the address.
        QCOMPARE(contar(*m_demo, "SELECT COUNT(*) FROM auditoria WHERE accion = 'login' AND "
                                 "direccion = '10.1.1.3' AND detalle = 'rechazado'"),
                 3LL);
        QCOMPARE(contar(*m_demo, "SELECT COUNT(*) FROM auditoria WHERE accion = 'login' AND "
                                 "direccion = '10.1.1.1' AND usuario = 'operador' AND "
                                 "detalle = 'aceptado'"),
                 1LL);
        // The password is stored hashed, never as typed.
        QVERIFY(textoSql(*m_demo, "SELECT clave_hash FROM usuarios WHERE usuario = 'admin'")
                    .rfind("$argon2", 0) == 0);
    }

    void soloDireccionesConSesion()
    {
        const std::string consultas[][2] = {
            {"calcularpremios4.php", "&f=2026-11-22&j=1&s=1&a=2"},
            {"publicarPremios2.php", "&f=2026-11-22&j=1&s=7&a=05"},
            {"deshacerpremios.php", "&f=2026-11-22&j=1&s=7"},
            {"autopremiar.php", "&j=1&s=7&a=05"},
            {"monitorventas.php", "&f=2026-11-22&j=1-1:"},
            {"ventabancas2.php", "d=2026-11-21&h=2026-11-22"},
            {"reportex.php", "bx=SB01&j=1,2,3,4&d=2026-11-21&h=2026-11-22"}};
        const std::string antes = huella(*m_demo);
        for (const auto &c : consultas) {
            QVERIFY(Oficina::requiereSesion(c[0]));
            QCOMPARE(pedir(*m_demo, c[0], c[1], otra), std::string());
            QVERIFY2(!pedir(*m_demo, c[0], c[1], aqui).empty(), c[0].c_str());
            // A failed login does not open the door.
            pedir(*m_demo, "validarUser.php", "u=admin&p=mala", otra);
            QCOMPARE(pedir(*m_demo, c[0], c[1], otra), std::string());
        }
        // Undo what the logged-in address just did, so the other tests see the demo data.
        QCOMPARE(pedir(*m_demo, "deshacerpremios.php", "&f=2026-11-22&j=1&s=7"), std::string("1"));
        QCOMPARE(pedir(*m_demo, "autopremiar.php", "&j=1&s=1&a=05"), std::string("0"));
        QCOMPARE(pedir(*m_demo, "calcularpremios4.php", "&f=2026-11-22&j=1&s=1&a=2").substr(0, 6),
                 std::string("banca,"));
        // A logged-in user without the game may not publish it, nor calculate it.
        pedir(*m_demo, "validarUser.php", "u=operador&p=operador1", "10.1.1.9");
        QCOMPARE(pedir(*m_demo, "publicarPremios2.php", "&f=2026-11-22&j=2&s=20&a=05", "10.1.1.9"),
                 std::string());
        QCOMPARE(pedir(*m_demo, "calcularpremios4.php", "&f=2026-11-22&j=2&s=20&a=05", "10.1.1.9"),
                 std::string());
        QCOMPARE(contar(*m_demo, "SELECT COUNT(*) FROM auditoria WHERE direccion = '10.1.1.9' AND "
                                 "detalle LIKE '%rechazado: juego no permitido al usuario'"),
                 2LL);
        QCOMPARE(huella(*m_demo), antes);
        // Open endpoints answer anyone.
        QVERIFY(!pedir(*m_demo, "datetime.php", "", otra).empty());
        QVERIFY(!pedir(*m_demo, "sorteospremiar3.php", "", otra).empty());
        QCOMPARE(pedir(*m_demo, "noexiste.php", "", aqui), std::string());
    }

    // ---- layouts -------------------------------------------------------------------------

    void datetime()
    {
        const auto l = lineas(pedir(*m_demo, "datetime.php", ""));
        QCOMPARE(l.size(), size_t(5));
        QCOMPARE(l[0], std::string(hoy));
        QCOMPARE(l[1], std::string("domingo"));
        QCOMPARE(l[4], std::string("14:05:00"));
    }

    void sorteospremiar3()
    {
        const std::string r = pedir(*m_demo, "sorteospremiar3.php", "");
        const size_t fin = r.find("_FIN_\n");
        QVERIFY(fin != std::string::npos);
        const auto juegos = lineas(r.substr(0, fin));
        const auto sorteos = lineas(r.substr(fin + 6));
        QCOMPARE(juegos.size(), size_t(4));
        const auto g1 = partir(juegos[0], ';');
        QCOMPARE(g1.size(), size_t(6));
        QCOMPARE(g1[0], std::string("1"));
        QCOMPARE(g1[1], std::string("Fauna Activa"));
        QCOMPARE(g1[2], std::string(""));
        QCOMPARE(partir(g1[3], ',').size(), size_t(38));
        QCOMPARE(partir(g1[3], ',')[0], std::string("0"));
        QCOMPARE(partir(g1[3], ',')[1], std::string("00"));
        QCOMPARE(partir(g1[4], ',')[0], std::string("Delf\xEDn")); // Latin-1 byte 0xED
        QCOMPARE(partir(g1[4], ',').size(), size_t(38));
        QCOMPARE(g1[5], std::string("A"));
        const auto g4 = partir(juegos[3], ';');
        QCOMPARE(g4[2], std::string("X"));
        QCOMPARE(g4[3], std::string(""));
        QCOMPARE(g4[5], std::string("N"));
        QCOMPARE(sorteos.size(), size_t(12 + 11 + 6 + 4));
        const auto s1 = partir(sorteos[0], ';');
        QCOMPARE(s1.size(), size_t(3));
        QCOMPARE(s1[0], std::string("1"));
        QCOMPARE(s1[1], std::string("1"));
        QCOMPARE(s1[2], std::string("08:00 AM"));
        QCOMPARE(partir(sorteos.back(), ';')[2], std::string("07:00 PM"));
    }

    void resultadosPasados()
    {
        // At 14:05 game 1 (08:00 .. 19:00) has results for 08:00 .. 13:00; 14:00 is left for
        // the result script.
        const auto l = lineas(pedir(*m_demo, "resultadosJuego.php", "f=2026-11-22&j=1"));
        QCOMPARE(l.size(), size_t(6));
        for (size_t i = 0; i < l.size(); ++i) {
            const auto f = partir(l[i], ',');
            QCOMPARE(f.size(), size_t(2));
            QCOMPARE(f[0], std::to_string(i + 1));
        }
        QCOMPARE(lineas(pedir(*m_demo, "resultadosJuego.php", "f=2026-11-21&j=1")).size(),
                 size_t(12));
        // No result yet is still an answer: a lone line break, never an empty body.
        QCOMPARE(pedir(*m_demo, "resultadosJuego.php", "f=2026-11-23&j=1"), std::string("\n"));
        const auto p = lineas(pedir(*m_demo, "sorteospendientes.php", "&g=resultados_demo"));
        QCOMPARE(p.size(), size_t(2));
        QCOMPARE(p[0], std::string(hoy));
        QCOMPARE(p[1], std::string("1,7,14:00:00"));
        QCOMPARE(lineas(pedir(*m_demo, "sorteospendientes.php", "&g=otro")).size(), size_t(1));
    }

    void cargarsorteosYResultados()
    {
        const auto s = lineas(pedir(*m_demo, "cargarsorteos.php", ""));
        QCOMPARE(s.size(), size_t(33));
        const auto f = partir(s[0], ',');
        QCOMPARE(f.size(), size_t(8));
        QCOMPARE(f[0], std::string("1"));
        QCOMPARE(f[1], std::string("Fauna Activa"));
        QCOMPARE(f[2], std::string("1"));
        QCOMPARE(f[3], std::string("08:00 AM"));
        QCOMPARE(f[4], std::string("08:00:00"));
        QCOMPARE(f[5], std::string("1/30"));
        QCOMPARE(f[6], std::string("X"));
        QCOMPARE(f[7], std::string("resultados_demo"));
        for (const auto &l : s) {
            const auto c = partir(l, ',');
            QCOMPARE(c.size(), size_t(8));
            if (c[0] != "1")
                QCOMPARE(c[6], std::string(""));
        }
        const auto r = lineas(pedir(*m_demo, "cargarresultados.php", ""));
        QCOMPARE(static_cast<long long>(r.size()),
                 contar(*m_demo, "SELECT COUNT(*) FROM resultados WHERE fecha = '2026-11-22'"));
        bool vioNumero = false;
        for (const auto &l : r) {
            const auto c = partir(l, ',');
            QCOMPARE(c.size(), size_t(8));
            QVERIFY(horaValida(c[7]));
            if (c[0] == "4") {
                vioNumero = true;
                QCOMPARE(c[2], std::string("X"));
                QCOMPARE(c[5].size(), size_t(3));
                QCOMPARE(c[6], std::string(""));
            } else {
                QCOMPARE(c[2], std::string(""));
                QVERIFY(!c[6].empty());
            }
        }
        QVERIFY(vioNumero);
    }

    void monitorSorteos()
    {
        const auto todos = lineas(pedir(*m_demo, "monitorsorteos2.php", "&u=admin"));
        QCOMPARE(todos.size(), size_t(33));
        const auto f = partir(todos[0], ';');
        QCOMPARE(f.size(), size_t(9));
        QCOMPARE(f[0], std::string("1-1:"));
        QCOMPARE(f[1], std::string("Fauna Activa 8AM"));
        QCOMPARE(f[2], std::string("1"));
        QCOMPARE(f[3], std::string("1"));
        QCOMPARE(f[4], std::string("30"));
        QCOMPARE(partir(f[5], ',').size(), size_t(38));
        QCOMPARE(partir(f[6], ',').size(), size_t(38));
        QCOMPARE(f[7], std::string("1"));
        QCOMPARE(f[8], std::string("08:00 AM"));
        const auto op = lineas(pedir(*m_demo, "monitorsorteos2.php", "&u=operador"));
        QCOMPARE(op.size(), size_t(12 + 4));
        for (const auto &l : op) {
            const std::string c = partir(l, ';')[0];
            QVERIFY(c.rfind("1-", 0) == 0 || c.rfind("4-", 0) == 0);
        }
        const auto n = partir(op.back(), ';');
        QCOMPARE(n[0], std::string("4-33:"));
        QCOMPARE(n[4], std::string("600"));
        QCOMPARE(n[5], std::string(""));
        QVERIFY(pedir(*m_demo, "monitorsorteos2.php", "&u=nadie").empty());
    }

    void bancasYAgencias()
    {
        const auto b = lineas(pedir(*m_demo, "bancasactivas.php", ""));
        QCOMPARE(b.size(), size_t(6));
        QCOMPARE(b[0], std::string("01,Banca Oriente"));
        const auto a = lineas(pedir(*m_demo, "monitoragencias.php", ""));
        // One line per office and per draw of the games the agency has a commission for.
        QCOMPARE(static_cast<long long>(a.size()),
                 contar(*m_demo, "SELECT COUNT(*) FROM taquillas") * 33);
        const auto f = partir(a[0], ',');
        QCOMPARE(f.size(), size_t(7));
        QCOMPARE(f[0], std::string("01"));
        QCOMPARE(f[1], std::string("01"));
        QCOMPARE(f[2], std::string("001"));
        QCOMPARE(f[3], std::string("01"));
        QCOMPARE(f[5], std::string("1-1:"));
        QCOMPARE(f[6], std::string("10.00"));
    }

    void monitorResultadosYVentas()
    {
        const auto r = lineas(pedir(*m_demo, "monitorresultados.php", "&f=2026-11-22"));
        QCOMPARE(r[0], std::string("cjuego,csorteo,resultado"));
        QCOMPARE(static_cast<long long>(r.size()) - 1,
                 contar(*m_demo, "SELECT COUNT(*) FROM resultados WHERE fecha = '2026-11-22'"));
        const auto r1 = partir(r[1], ',');
        QCOMPARE(r1.size(), size_t(3));
        QCOMPARE(r1[0], std::string("1-1:"));
        QCOMPARE(r1[1], std::string("1"));
        QCOMPARE(r1[2], textoSql(*m_demo, "SELECT resultado FROM resultados WHERE sorteo_id = 1 "
                                          "AND fecha = '2026-11-22'"));
        QCOMPARE(lineas(pedir(*m_demo, "monitorresultados.php", "&f=2030-01-01")).size(),
                 size_t(1));

        // The combined code "1-3:" gives exactly the plays of game 1, draw 3 of that date.
        const auto v = lineas(pedir(*m_demo, "monitorventas.php", "&f=2026-11-22&j=1-3:"));
        QVERIFY(!v.empty());
        QCOMPARE(static_cast<long long>(v.size()),
                 contar(*m_demo, "SELECT COUNT(*) FROM jugadas WHERE sorteo_id = 3 AND "
                                 "fecha = '2026-11-22'"));
        long long premiadas = 0, eliminadas = 0, pagadas = 0;
        const std::string ganador = r1.size() ? partir(r[3], ',')[2] : "";
        for (const auto &l : v) {
            const auto f = partir(l, ',');
            QCOMPARE(f.size(), size_t(12));
            QVERIFY(horaValida(f[1]));
            if (f[9] != "0") {
                ++premiadas;
                QCOMPARE(f[7], ganador);
                // 1/30: the prize is 30 times the amount.
                QCOMPARE(centimos(f[9]), centimos(f[8]) * 30);
            }
            eliminadas += f[10] == "E";
            pagadas += f[11] == "X";
            QVERIFY(f[10].empty() || f[10] == "E");
            QVERIFY(f[11].empty() || f[11] == "X");
        }
        QCOMPARE(premiadas, contar(*m_demo, "SELECT COUNT(*) FROM premios p JOIN jugadas j ON "
                                            "j.id = p.jugada_id WHERE j.sorteo_id = 3 AND "
                                            "j.fecha = '2026-11-22'"));
        QCOMPARE(pagadas, contar(*m_demo, "SELECT COUNT(*) FROM jugadas WHERE sorteo_id = 3 AND "
                                          "fecha = '2026-11-22' AND pagada = 1"));
        QCOMPARE(eliminadas, contar(*m_demo, "SELECT COUNT(*) FROM jugadas WHERE sorteo_id = 3 "
                                             "AND fecha = '2026-11-22' AND eliminada = 1"));
        QVERIFY(contar(*m_demo, "SELECT COUNT(*) FROM jugadas WHERE eliminada = 1") > 0);
        // A large draw is read in two halves by two threads: the same bytes as in one.
        const std::string enUno = pedir(*m_demo, "monitorventas.php", "&f=2026-11-22&j=1-3:");
        const std::string lineasUnHilo =
            pedir(*m_demo, "monitorventas.php", "&f=2026-11-22&j=1-9:");
        QVERIFY(std::count(enUno.begin(), enUno.end(), '\n') > 50);
        m_demo->fijarJugadasParaDosHilos(2);
        QCOMPARE(pedir(*m_demo, "monitorventas.php", "&f=2026-11-22&j=1-3:"), enUno);
        QCOMPARE(pedir(*m_demo, "monitorventas.php", "&f=2026-11-22&j=1-9:"), lineasUnHilo);
        m_demo->fijarJugadasParaDosHilos(200000);
        // A known draw nobody played that day: a lone line break, not the empty "no answer".
        QCOMPARE(pedir(*m_demo, "monitorventas.php", "&f=2030-01-01&j=1-3:"), std::string("\n"));
        QVERIFY(pedir(*m_demo, "monitorventas.php", "&f=2026-11-22&j=13").empty());
        QVERIFY(pedir(*m_demo, "monitorventas.php", "&f=2026-11-22&j=1").empty());
    }

    // A draw of 60,000 plays, sold in no order of time: read by one thread or from both ends
    // by two, plain or in gzip, the console gets the same text; the gzip reply made of
    // stretches is one ordinary gzip stream, which Qt's own decoder reads as the console does.
    void sorteoGrandeEnGzip()
    {
        Oficina o(m_dir.filePath("grande.db").toStdString());
        o.fijarReloj(relojFijo);
        OpcionesDemo op;
        op.agencias = 6;
        op.jugadasHoy = 0;
        op.diasPrevios = 0;
        QVERIFY(crearDemo(o, Momento{hoy, "07:00:00"}, op));
        QCOMPARE(pedir(o, "validarUser.php", "u=admin&p=tornavo1").substr(0, 2),
                 std::string("1\n"));
        const long long sorteo =
            contar(o, "SELECT id FROM sorteos WHERE juego_id = 1 ORDER BY hora DESC LIMIT 1");
        QVERIFY(textoSql(o, "SELECT hora FROM sorteos WHERE id = " + std::to_string(sorteo)) >
                std::string("16:00:00"));
        const std::string codigo =
            textoSql(o, "SELECT j.clave || '-' || s.clave || ':' FROM sorteos s JOIN juegos j "
                        "ON j.id = s.juego_id WHERE s.id = " +
                            std::to_string(sorteo));
        o.conConexion([&](sqlite3 *db) {
            std::vector<long long> taquillas;
            Sentencia tq(db, "SELECT id FROM taquillas");
            while (tq.paso())
                taquillas.push_back(tq.entero(0));
            Transaccion t(db);
            Sentencia ticket(db, "INSERT INTO tickets(taquilla_id, fecha, hora, numero, serial) "
                                 "VALUES(?1, ?2, ?3, ?4, ?5)");
            Sentencia jugada(db,
                             "INSERT INTO jugadas(ticket_id, sorteo_id, fecha, hora, numero, "
                             "monto, eliminada, pagada) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)");
            for (int i = 0; i < 20000; ++i) {
                // Times jump about (ticket ids do not follow them) and many tickets share one.
                const int segundos = 8 * 3600 + (i * 7919) % 25000;
                char hora[16];
                std::snprintf(hora, sizeof hora, "%02d:%02d:%02d", segundos / 3600,
                              segundos / 60 % 60, segundos % 60);
                // Some serials hold a letter outside ASCII: Latin-1 in the reply.
                const std::string serial =
                    (i % 97 == 0 ? "A\xC3\x91O" : "S") + std::to_string(i * 31 % 100000);
                ticket.bind(1, taquillas[static_cast<size_t>(i) % taquillas.size()]);
                ticket.bind(2, std::string(hoy)).bind(3, std::string(hora)).bind(4, i + 1);
                ticket.bind(5, serial);
                ticket.ejecutar();
                ticket.reiniciar();
                const long long id = sqlite3_last_insert_rowid(db);
                for (int j = 0; j < 3; ++j) {
                    jugada.bind(1, id).bind(2, sorteo).bind(3, std::string(hoy));
                    jugada.bind(4, std::string(hora)).bind(5, std::to_string((i + j) % 37));
                    jugada.bind(6, 100LL * (1 + (i + j) % 9)).bind(7, i % 50 == 0 ? 1 : 0);
                    jugada.bind(8, i % 70 == 0 ? 1 : 0);
                    jugada.ejecutar();
                    jugada.reiniciar();
                }
            }
            t.confirmar();
        });
        const std::string consulta = std::string("&f=") + hoy + "&j=" + codigo;
        const std::string plano = pedir(o, "monitorventas.php", consulta);
        QCOMPARE(std::count(plano.begin(), plano.end(), '\n'), 60000L);
        QVERIFY(plano.find(",A\xD1O") != std::string::npos);
        QVERIFY(plano.find("\xC3") == std::string::npos);
        // In order of time of sale, then ticket: the lines' times never go back.
        const auto v = lineas(plano);
        for (size_t i = 1; i < v.size(); ++i)
            QVERIFY(partir(v[i - 1], ',')[1] <= partir(v[i], ',')[1]);

        const Respuesta uno = o.responder("monitorventas.php", consulta, aqui, true);
        QVERIFY(uno.gzip);
        QVERIFY(uno.cuerpo.size() * 3 < plano.size());
        QVERIFY(descomprimir(uno.cuerpo) == plano);
        o.fijarJugadasParaDosHilos(2);
        QVERIFY(pedir(o, "monitorventas.php", consulta) == plano);
        const Respuesta dos = o.responder("monitorventas.php", consulta, aqui, true);
        QVERIFY(dos.gzip);
        QVERIFY(descomprimir(dos.cuerpo) == plano);
        // Without gzip offered, or for a short list, the text as it is.
        const Respuesta sinGzip = o.responder("monitorventas.php", consulta, aqui, false);
        QVERIFY(!sinGzip.gzip);
        QVERIFY(sinGzip.cuerpo == plano);
        const Respuesta vacia =
            o.responder("monitorventas.php", "&f=2030-01-01&j=" + codigo, aqui, true);
        QVERIFY(!vacia.gzip);
        QCOMPARE(vacia.cuerpo, std::string("\n"));
        // Refused without a session, gzip or not.
        QVERIFY(o.responder("monitorventas.php", consulta, otra, true).cuerpo.empty());

        // The console's reader: Qt offers gzip itself and decodes the body.
        httplib::Server http;
        std::atomic<bool> qtOfreceGzip{false};
        http.Get("/lista", [&](const httplib::Request &req, httplib::Response &res) {
            // As the server does: the HTTP library must not compress the body again.
            qtOfreceGzip =
                req.get_header_value("Accept-Encoding").find("gzip") != std::string::npos;
            const_cast<httplib::Headers &>(req.headers).erase("Accept-Encoding");
            res.body = dos.cuerpo;
            res.set_header("Content-Type", "text/plain; charset=ISO-8859-1");
            res.set_header("Content-Encoding", "gzip");
        });
        const int puerto = http.bind_to_any_port("127.0.0.1");
        QVERIFY(puerto > 0);
        std::thread hilo([&] { http.listen_after_bind(); });
        QNetworkAccessManager red;
        QNetworkReply *r =
            red.get(QNetworkRequest(QUrl(QStringLiteral("http://127.0.0.1:%1/lista").arg(puerto))));
        QTRY_VERIFY_WITH_TIMEOUT(r->isFinished(), 60000);
        const QByteArray leido = r->readAll();
        const auto error = r->error();
        delete r;
        http.stop();
        hilo.join();
        QCOMPARE(error, QNetworkReply::NoError);
        QVERIFY(qtOfreceGzip);
        QVERIFY(leido == QByteArray::fromStdString(plano));
    }

    void ventasPorBanca()
    {
        const auto v = lineas(pedir(*m_demo, "ventabancas2.php", "d=2026-11-21&h=2026-11-22"));
        QCOMPARE(static_cast<long long>(v.size()),
                 contar(*m_demo, "SELECT COUNT(*) FROM agencias"));
        long long bruto = 0, premios = 0;
        for (const auto &l : v) {
            const auto f = partir(l, ',');
            QCOMPARE(f.size(), size_t(9));
            QCOMPARE(f[2].substr(0, 2), f[0]);
            QCOMPARE(f[2].size(), size_t(7));
            QVERIFY(horaValida(f[8]));
            bruto += centimos(f[5]);
            premios += centimos(f[6]);
            // Commission between 10 and 12 % on animals and 8 and 10 % on numbers.
            const double c =
                static_cast<double>(centimos(f[7])) / static_cast<double>(centimos(f[5]));
            QVERIFY(c >= 0.079 && c <= 0.121);
        }
        QCOMPARE(bruto, contar(*m_demo, "SELECT SUM(monto) FROM jugadas WHERE eliminada = 0"));
        QCOMPARE(premios, contar(*m_demo, "SELECT SUM(monto) FROM premios"));
        QCOMPARE(pedir(*m_demo, "ventabancas2.php", "d=2026-11-22&h=2026-11-21"),
                 std::string("\n"));
        QVERIFY(pedir(*m_demo, "ventabancas2.php", "d=ayer&h=hoy").empty());
    }

    void reporteSuperBanca()
    {
        const std::string r =
            pedir(*m_demo, "reportex.php", "bx=SB01&j=1,4&d=2026-11-22&h=2026-11-22");
        const size_t a = r.find("_FIN_\n");
        const size_t b = r.find("_FIN_\n", a + 1);
        QVERIFY(a != std::string::npos && b != std::string::npos);
        const auto juegos = lineas(r.substr(0, a));
        const auto comisiones = lineas(r.substr(a + 6, b - a - 6));
        const auto ventas = lineas(r.substr(b + 6));
        QCOMPARE(juegos.size(), size_t(2));
        QCOMPARE(juegos[0], std::string("1,Fauna Activa"));
        QCOMPARE(juegos[1], std::string("4,Triple Tornavo"));
        // Five bancas under SB01 × two games, less banca 05's number game.
        QCOMPARE(comisiones.size(), size_t(9));
        QCOMPARE(comisiones[0], std::string("01,1,12.00,40.00"));
        long long bruto = 0;
        for (const auto &l : ventas) {
            const auto f = partir(l, ',');
            QCOMPARE(f.size(), size_t(5));
            QVERIFY(f[0] != "06");
            QVERIFY(f[2] == "1" || f[2] == "4");
            bruto += centimos(f[3]);
        }
        QCOMPARE(bruto, contar(*m_demo, "SELECT SUM(jg.monto) FROM jugadas jg JOIN sorteos s ON "
                                        "s.id = jg.sorteo_id JOIN juegos j ON j.id = s.juego_id "
                                        "JOIN tickets t ON t.id = jg.ticket_id JOIN taquillas tq "
                                        "ON tq.id = t.taquilla_id JOIN agencias ag ON ag.id = "
                                        "tq.agencia_id JOIN jefes je ON je.id = ag.jefe_id "
                                        "JOIN bancas b ON b.id = je.banca_id WHERE b.codigo <> "
                                        "'06' AND j.clave IN ('1','4') AND jg.eliminada = 0 AND "
                                        "jg.fecha = '2026-11-22'"));
        const std::string otra =
            pedir(*m_demo, "reportex.php", "bx=SB02&j=1,2,3,4&d=2026-11-22&h=2026-11-22");
        QVERIFY(otra.find("\n06,Banca Costa Azul,") != std::string::npos);
        QVERIFY(otra.find("\n01,") == std::string::npos);
    }

    // ---- prize arithmetic, publish and undo ------------------------------------------------

    void aritmeticaDePremios()
    {
        Oficina &o = *m_vacia;
        const long long t1 = primeraTaquilla(o);
        // Game 1, draw "8" (15:00, 1/30); game 3, draw "27" (15:00, 1/32); game 4, draw
        // "32" (16:00, 1/600).
        QVERIFY(o.vender(t1, "1", "8", hoy, "14:00:00", {{"0", 250}, {"00", 300}, {"0", 100}}));
        QVERIFY(o.vender(t1 + 1, "1", "8", hoy, "14:01:00", {{"0", 1000}}));
        QVERIFY(o.vender(t1, "3", "27", hoy, "14:02:00", {{"07", 35}}));
        // "7" is no animal: the console pads it to "07" before sending it.
        QVERIFY(!o.vender(t1, "3", "27", hoy, "14:02:00", {{"7", 35}}));
        QVERIFY(o.vender(t1, "4", "32", hoy, "14:03:00", {{"012", 150}, {"12", 100}}) == false);
        QVERIFY(o.vender(t1, "4", "32", hoy, "14:03:00", {{"012", 150}, {"120", 100}}));
        QVERIFY(!o.vender(t1, "1", "8", hoy, "14:04:00", {{"37", 100}}));
        QVERIFY(!o.vender(t1, "1", "8", hoy, "14:04:00", {{"5", 0}}));
        QVERIFY(!o.vender(t1, "1", "99", hoy, "14:04:00", {{"5", 100}}));
        // The 1.00 play on "0" is deleted: it never wins.
        o.conConexion([](sqlite3 *db) {
            ejecutarSql(db, "UPDATE jugadas SET eliminada = 1 WHERE monto = 100 AND numero = '0'");
        });

        auto calculo = lineas(pedir(o, "calcularpremios4.php", "&f=2026-11-22&j=1&s=8&a=0"));
        QCOMPARE(calculo.size(), size_t(3));
        QCOMPARE(calculo[0], std::string("banca,agencia,ticket,numero,jugado,premio"));
        auto f = partir(calculo[1], ',');
        QCOMPARE(f.size(), size_t(6));
        QCOMPARE(f[0], std::string("Banca Oriente"));
        QCOMPARE(f[2], std::string("1"));
        QCOMPARE(f[3], std::string("0"));
        QCOMPARE(f[4], std::string("2.50"));
        QCOMPARE(f[5], std::string("75.00"));
        QCOMPARE(partir(calculo[2], ',')[5], std::string("300.00"));
        // "00" is another animal than "0".
        calculo = lineas(pedir(o, "calcularpremios4.php", "&f=2026-11-22&j=1&s=8&a=00"));
        QCOMPARE(calculo.size(), size_t(2));
        QCOMPARE(partir(calculo[1], ',')[5], std::string("90.00"));
        QCOMPARE(lineas(pedir(o, "calcularpremios4.php", "&f=2026-11-22&j=1&s=8&a=5")).size(),
                 size_t(1));
        calculo = lineas(pedir(o, "calcularpremios4.php", "&f=2026-11-22&j=3&s=27&a=07"));
        QCOMPARE(partir(calculo[1], ',')[5], std::string("11.20"));
        calculo = lineas(pedir(o, "calcularpremios4.php", "&f=2026-11-22&j=4&s=32&a=012"));
        QCOMPARE(calculo.size(), size_t(2));
        QCOMPARE(partir(calculo[1], ',')[4], std::string("1.50"));
        QCOMPARE(partir(calculo[1], ',')[5], std::string("900.00"));
        // A factor that does not divide evenly is rounded to the cent: 1.00 × 100 / 7 = 14.29.
        o.conConexion([](sqlite3 *db) {
            ejecutarSql(db, "UPDATE sorteos SET divisor = 7, dividendo = 100 WHERE id = 27");
        });
        calculo = lineas(pedir(o, "calcularpremios4.php", "&f=2026-11-22&j=3&s=27&a=07"));
        QCOMPARE(partir(calculo[1], ',')[5], std::string("5.00")); // 0.35 × 100 / 7
        QVERIFY(o.vender(t1, "3", "27", hoy, "14:04:30", {{"07", 100}}));
        calculo = lineas(pedir(o, "calcularpremios4.php", "&f=2026-11-22&j=3&s=27&a=07"));
        QCOMPARE(partir(calculo[2], ',')[5], std::string("14.29"));
        // The calculation changed nothing.
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM resultados"), 0LL);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM premios"), 0LL);
    }

    void publicarDeshacerRepublicar()
    {
        Oficina &o = *m_vacia;
        const std::string antes = huella(o);
        // Before its time (15:00) the draw takes no result: empty reply, audited, nothing kept.
        QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=8&a=0"), std::string());
        QCOMPARE(pedir(o, "autopremiar.php", "&j=1&s=8&a=0"), std::string());
        QCOMPARE(huella(o), antes);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM auditoria WHERE accion IN ('publicar', "
                           "'autopremiar') AND detalle LIKE '%rechazado: el sorteo de las "
                           "15:00:00 aun no llega'"),
                 2LL);
        HoraDePrueba despues("16:30:00");
        QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=8&a=0"), std::string("1"));
        QCOMPARE(
            contar(o, "SELECT COUNT(*) FROM resultados WHERE sorteo_id = 8 AND resultado = '0'"),
            1LL);
        QCOMPARE(contar(o, "SELECT SUM(monto) FROM premios"), 7500LL + 30000LL);
        QCOMPARE(lineas(pedir(o, "resultadosJuego.php", "f=2026-11-22&j=1")),
                 std::vector<std::string>{"8,0"});
        const auto cr = lineas(pedir(o, "cargarresultados.php", ""));
        QCOMPARE(cr.size(), size_t(1));
        QCOMPARE(partir(cr[0], ',')[6], std::string("Delf\xEDn"));
        QCOMPARE(partir(cr[0], ',')[7], std::string("16:30:00"));
        const auto mv = lineas(pedir(o, "monitorventas.php", "&f=2026-11-22&j=1-8:"));
        QCOMPARE(mv.size(), size_t(4));
        QCOMPARE(partir(mv[0], ',')[9], std::string("75.00"));
        QCOMPARE(partir(mv[1], ',')[9], std::string("0"));
        QCOMPARE(partir(mv[2], ',')[10], std::string("E"));
        QCOMPARE(partir(mv[2], ',')[9], std::string("0"));

        // Sales are refused once the result is out.
        QVERIFY(!o.vender(primeraTaquilla(o), "1", "8", hoy, "14:05:00", {{"5", 100}}));
        long long jugadas = contar(o, "SELECT COUNT(*) FROM jugadas");
        try {
            o.conConexion([](sqlite3 *db) {
                ejecutarSql(db, "INSERT INTO jugadas(ticket_id, sorteo_id, fecha, hora, numero, "
                                "monto) VALUES(1, 8, '2026-11-22', '14:06:00', '5', 100)");
            });
            QFAIL("the database took a play for a draw with a result");
        } catch (const ErrorBaseDatos &) {
        }
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM jugadas"), jugadas);

        // A second publish, even of another number, answers "0" and changes nothing.
        const std::string publicado = huella(o);
        QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=8&a=00"), std::string("0"));
        QCOMPARE(pedir(o, "autopremiar.php", "&j=1&s=8&a=00"), std::string("0"));
        QCOMPARE(huella(o), publicado);

        QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=1&s=8"), std::string("1"));
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM resultados"), 0LL);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM premios"), 0LL);
        QCOMPARE(huella(o), antes);
        QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=1&s=8"), std::string("0"));

        // Republish with another number: the new winners only.
        QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=8&a=00"), std::string("1"));
        QCOMPARE(contar(o, "SELECT SUM(monto) FROM premios"), 9000LL);
        QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=1&s=8"), std::string("1"));
        // After the undo the draw sells again.
        QVERIFY(o.vender(primeraTaquilla(o), "1", "8", hoy, "14:05:00", {{"05", 100}}));

        // Invalid results, unknown draws, bad or future dates: empty reply, nothing stored.
        for (const char *q :
             {"&f=2026-11-22&j=1&s=8&a=37", "&f=2026-11-22&j=1&s=8&a=", "&f=2026-11-22&j=1&s=8&a=5",
              "&f=2026-11-22&j=4&s=32&a=12", "&f=2026-11-22&j=4&s=32&a=1234",
              "&f=2026-11-22&j=1&s=99&a=5", "&f=2026-11-23&j=1&s=8&a=5",
              "&f=22/11/2026&j=1&s=8&a=5", "&f=2026-11-22&j=1&s=32&a=5"})
            QCOMPARE(pedir(o, "publicarPremios2.php", q), std::string());
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM resultados"), 0LL);

        // Automatic award: today's date; audited.
        QCOMPARE(pedir(o, "autopremiar.php", "&j=4&s=32&a=012"), std::string("1"));
        QCOMPARE(contar(o, "SELECT SUM(monto) FROM premios"), 90000LL);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM resultados WHERE fecha = '2026-11-22'"), 1LL);
        QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=4&s=32"), std::string("1"));

        for (const char *accion : {"publicar", "deshacer", "autopremiar"})
            QVERIFY2(contar(o, std::string("SELECT COUNT(*) FROM auditoria WHERE accion = '") +
                                   accion + "' AND direccion = '10.0.0.8' AND usuario = 'admin'") >=
                         1,
                     accion);
        // The audit log only grows.
        const long long filas = contar(o, "SELECT COUNT(*) FROM auditoria");
        try {
            o.conConexion([](sqlite3 *db) { ejecutarSql(db, "DELETE FROM auditoria"); });
            QFAIL("audit rows were deleted");
        } catch (const ErrorBaseDatos &) {
        }
        try {
            o.conConexion(
                [](sqlite3 *db) { ejecutarSql(db, "UPDATE auditoria SET usuario = 'x'"); });
            QFAIL("audit rows were changed");
        } catch (const ErrorBaseDatos &) {
        }
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM auditoria"), filas);
    }

    void publicacionesSimultaneas()
    {
        // Two connections to one database (as two server processes would be) publish the same
        // draws at the same moment with different numbers: exactly one wins each time.
        const std::string ruta = m_dir.filePath("vacia.db").toStdString();
        Oficina otra(ruta);
        otra.fijarReloj(relojFijo);
        // Each server keeps its own sessions.
        QCOMPARE(otra.atenderConsulta("validarUser.php", "u=admin&p=tornavo1", aqui).substr(0, 2),
                 std::string("1\n"));
        Oficina &una = *m_vacia;
        const long long t1 = primeraTaquilla(una);
        // Draws 9 .. 12 of game 1 (16:00 .. 19:00) get a play on "05" and one on "06".
        for (int s = 9; s <= 12; ++s) {
            QVERIFY(una.vender(t1, "1", std::to_string(s), hoy, "14:00:00",
                               {{"05", 100}, {"06", 200}}));
        }
        HoraDePrueba despues("19:30:00");
        for (int s = 9; s <= 12; ++s) {
            const std::string base = "&f=2026-11-22&j=1&s=" + std::to_string(s) + "&a=";
            std::string r1, r2, r3;
            std::atomic<int> listos{0};
            auto esperar = [&listos] {
                ++listos;
                while (listos < 3) {
                }
            };
            std::thread a([&] {
                esperar();
                r1 = una.atenderConsulta("publicarPremios2.php", base + "05", aqui);
            });
            std::thread b([&] {
                esperar();
                r2 = otra.atenderConsulta("publicarPremios2.php", base + "06", aqui);
            });
            std::thread c([&] {
                esperar();
                r3 = otra.atenderConsulta("autopremiar.php",
                                          "&j=1&s=" + std::to_string(s) + "&a=05", aqui);
            });
            a.join();
            b.join();
            c.join();
            const int unos = (r1 == "1") + (r2 == "1") + (r3 == "1");
            const int ceros = (r1 == "0") + (r2 == "0") + (r3 == "0");
            QCOMPARE(unos, 1);
            QCOMPARE(ceros, 2);
            const std::string sid = std::to_string(s);
            QCOMPARE(contar(una, "SELECT COUNT(*) FROM resultados WHERE sorteo_id = " + sid), 1LL);
            const std::string ganador =
                textoSql(una, "SELECT resultado FROM resultados WHERE sorteo_id = " + sid);
            // One award set, matching the result that won.
            QCOMPARE(contar(una, "SELECT COUNT(*) FROM premios p JOIN jugadas j ON j.id = "
                                 "p.jugada_id WHERE j.sorteo_id = " +
                                     sid),
                     1LL);
            QCOMPARE(contar(una, "SELECT SUM(p.monto) FROM premios p JOIN jugadas j ON j.id = "
                                 "p.jugada_id WHERE j.sorteo_id = " +
                                     sid),
                     ganador == "05" ? 3000LL : 6000LL);
        }
    }

    // ---- rights, business rules, sessions and logins --------------------------------------

    void resumenDeVentas()
    {
        // The summary the reports read follows every sale, deletion, restoration, change of
        // amount, award and withdrawal.
        QTemporaryDir dir;
        Oficina o(dir.filePath("resumen.db").toStdString());
        o.fijarReloj(relojFijo);
        OpcionesDemo op;
        op.agencias = 6;
        op.jugadasHoy = 1500;
        op.diasPrevios = 2;
        op.jugadasDiaPrevio = 400;
        QVERIFY(crearDemo(o, relojFijo(), op));
        QVERIFY(resumenCuadra(o));
        QVERIFY(o.vender(primeraTaquilla(o), "1", "9", hoy, "14:05:00", {{"05", 700}, {"06", 50}}));
        QVERIFY(resumenCuadra(o));
        o.conConexion([](sqlite3 *db) {
            ejecutarSql(db, "UPDATE jugadas SET eliminada = 1 WHERE id % 7 = 0");
        });
        QVERIFY(resumenCuadra(o));
        o.conConexion([](sqlite3 *db) {
            ejecutarSql(db, "UPDATE jugadas SET eliminada = 0 WHERE id % 14 = 0");
            ejecutarSql(db, "UPDATE jugadas SET monto = monto * 2 WHERE id % 5 = 0");
            ejecutarSql(db, "UPDATE jugadas SET pagada = 0");
        });
        QVERIFY(resumenCuadra(o));
        QCOMPARE(pedir(o, "validarUser.php", "u=admin&p=tornavo1").substr(0, 2),
                 std::string("1\n"));
        QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=7&a=10"), std::string("1"));
        QVERIFY(resumenCuadra(o));
        QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=1&s=3"), std::string("1"));
        QVERIFY(resumenCuadra(o));
        // The reports agree with the plays themselves.
        long long bruto = 0;
        for (const auto &l : lineas(pedir(o, "ventabancas2.php", "d=2026-11-20&h=2026-11-22")))
            bruto += centimos(partir(l, ',')[5]);
        QCOMPARE(bruto, contar(o, "SELECT SUM(monto) FROM jugadas WHERE eliminada = 0"));
    }

    void derechosPorOpcion()
    {
        QTemporaryDir dir;
        Oficina o(dir.filePath("derechos.db").toStdString());
        o.fijarReloj(relojFijo);
        OpcionesDemo op;
        op.agencias = 4;
        op.jugadasHoy = 300;
        op.diasPrevios = 0;
        QVERIFY(crearDemo(o, relojFijo(), op));
        o.crearUsuario("deshacedor", "clave23", "Deshace", true, "23", "1", "", "SB01", "1");
        o.crearUsuario("automata", "clave24", "Auto", true, "24", "root", "", "SB01", "1");
        o.crearUsuario("casi", "clave", "Casi todo", true, "11,12,13,14,15,16,17,18,21,22,23,24,31",
                       "root", "", "SB01", "1");
        const struct {
            const char *usuario, *clave, *direccion;
        } usuarios[] = {{"admin", "tornavo1", "10.2.0.1"},
                        {"operador", "operador1", "10.2.0.2"},
                        {"deshacedor", "clave23", "10.2.0.3"},
                        {"automata", "clave24", "10.2.0.4"},
                        {"casi", "clave", "10.2.0.5"}};
        for (const auto &u : usuarios)
            QCOMPARE(pedir(o, "validarUser.php", std::string("u=") + u.usuario + "&p=" + u.clave,
                           u.direccion)
                         .substr(0, 2),
                     std::string("1\n"));
        const std::string admin = "10.2.0.1", operador = "10.2.0.2", deshacedor = "10.2.0.3",
                          automata = "10.2.0.4", casi = "10.2.0.5";
        const std::string calcular = "&f=2026-11-22&j=1&s=7&a=05";

        // Option 22: calculate and publish. "operador" has it; "deshacedor" does not.
        QCOMPARE(pedir(o, "calcularpremios4.php", calcular, deshacedor), std::string());
        QCOMPARE(pedir(o, "publicarPremios2.php", calcular, deshacedor), std::string());
        QCOMPARE(pedir(o, "calcularpremios4.php", calcular, operador).substr(0, 6),
                 std::string("banca,"));
        QCOMPARE(pedir(o, "publicarPremios2.php", calcular, operador), std::string("1"));
        // Option 23: undo. "operador" lacks it: refused, audited, the result stays.
        QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=1&s=7", operador), std::string());
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM resultados WHERE sorteo_id = 7"), 1LL);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM auditoria WHERE direccion = '10.2.0.2' AND "
                           "usuario = 'operador' AND accion = 'deshacerpremios.php' AND "
                           "detalle = 'rechazado: sin la opcion 23'"),
                 1LL);
        QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=1&s=7", deshacedor),
                 std::string("1"));
        // Option 24: the automatic award.
        QCOMPARE(pedir(o, "autopremiar.php", "&j=1&s=7&a=05", operador), std::string());
        QCOMPARE(pedir(o, "autopremiar.php", "&j=1&s=7&a=05", deshacedor), std::string());
        QCOMPARE(pedir(o, "autopremiar.php", "&j=1&s=7&a=05", automata), std::string("1"));
        QCOMPARE(pedir(o, "publicarPremios2.php", calcular, automata), std::string());
        // Option 21: the monitor's sales; 31: the super-banca report.
        const std::string ventas = "&f=2026-11-22&j=1-3:";
        const std::string reporte = "bx=SB01&j=1,4&d=2026-11-22&h=2026-11-22";
        QVERIFY(!pedir(o, "monitorventas.php", ventas, operador).empty());
        QCOMPARE(pedir(o, "monitorventas.php", ventas, deshacedor), std::string());
        QVERIFY(!pedir(o, "reportex.php", reporte, operador).empty());
        QCOMPARE(pedir(o, "reportex.php", reporte, automata), std::string());
        // Sales by banca: "root" alone, not even every other code.
        const std::string porBanca = "d=2026-11-22&h=2026-11-22";
        QVERIFY(!pedir(o, "ventabancas2.php", porBanca, admin).empty());
        QCOMPARE(pedir(o, "ventabancas2.php", porBanca, casi), std::string());
        QCOMPARE(pedir(o, "ventabancas2.php", porBanca, operador), std::string());
        QVERIFY(!pedir(o, "monitorventas.php", ventas, casi).empty());
        QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=1&s=7", casi), std::string("1"));
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM auditoria WHERE usuario = 'casi' AND "
                           "detalle = 'rechazado: sin la opcion root'"),
                 1LL);

        QVERIFY(Oficina::concedeOpcion("root", "root"));
        QVERIFY(Oficina::concedeOpcion("root,21", "23"));
        QVERIFY(!Oficina::concedeOpcion("21,root", "23"));
        QVERIFY(!Oficina::concedeOpcion("21,22", "2"));
        QVERIFY(!Oficina::concedeOpcion("", "21"));
    }

    void reglasDelNegocio()
    {
        QTemporaryDir dir;
        Oficina o(dir.filePath("reglas.db").toStdString());
        o.fijarReloj(relojFijo);
        OpcionesDemo op;
        op.agencias = 4;
        op.jugadasHoy = 0;
        op.diasPrevios = 0;
        QVERIFY(crearDemo(o, Momento{hoy, "07:00:00"}, op));
        QCOMPARE(pedir(o, "validarUser.php", "u=admin&p=tornavo1").substr(0, 2),
                 std::string("1\n"));
        const long long t1 = primeraTaquilla(o);

        // Sales close at the draw's time (draw 8, 15:00), in the database itself too.
        QVERIFY(o.vender(t1, "1", "8", hoy, "14:59:59", {{"05", 100}}));
        QVERIFY(!o.vender(t1, "1", "8", hoy, "15:00:00", {{"05", 100}}));
        QVERIFY(!o.vender(t1, "1", "8", hoy, "15:20:00", {{"05", 100}}));
        try {
            o.conConexion([](sqlite3 *db) {
                ejecutarSql(db, "INSERT INTO jugadas(ticket_id, sorteo_id, fecha, hora, numero, "
                                "monto) VALUES(1, 8, '2026-11-22', '15:00:00', '05', 100)");
            });
            QFAIL("the database took a play after the draw's time");
        } catch (const ErrorBaseDatos &) {
        }
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM jugadas"), 1LL);

        // No result before the draw's time, manual or automatic.
        QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=8&a=05"), std::string());
        QCOMPARE(pedir(o, "autopremiar.php", "&j=1&s=8&a=05"), std::string());
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM resultados"), 0LL);
        {
            HoraDePrueba quince("15:00:00");
            QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=8&a=05"),
                     std::string("1"));
            // A paid prize: the undo is refused with "0", audited, and nothing is withdrawn.
            o.conConexion([](sqlite3 *db) { ejecutarSql(db, "UPDATE jugadas SET pagada = 1"); });
            const std::string pagado = huella(o);
            QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=1&s=8"), std::string("0"));
            QCOMPARE(huella(o), pagado);
            QCOMPARE(contar(o, "SELECT COUNT(*) FROM premios"), 1LL);
            QCOMPARE(contar(o, "SELECT COUNT(*) FROM auditoria WHERE accion = 'deshacer' AND "
                               "detalle LIKE '%rechazado: 1 premios ya pagados'"),
                     1LL);
            // Unpaid again: the undo goes through.
            o.conConexion([](sqlite3 *db) { ejecutarSql(db, "UPDATE jugadas SET pagada = 0"); });
            QCOMPARE(pedir(o, "deshacerpremios.php", "&f=2026-11-22&j=1&s=8"), std::string("1"));
        }

        // A no-name game of two digits: only two digits are a result.
        o.conConexion([](sqlite3 *db) {
            ejecutarSql(db, "INSERT INTO juegos(clave, nombre, tipo, sin_nombres, cifras) "
                            "VALUES('9', 'Dupla', 'T', 'X', 2)");
            ejecutarSql(db, "INSERT INTO sorteos(juego_id, clave, etiqueta, hora, divisor, "
                            "dividendo) SELECT id, '90', '09:00 AM', '09:00:00', 1, 70 "
                            "FROM juegos WHERE clave = '9'");
        });
        for (const char *malo : {"%00x", "%00", "x", "1", "123", "1%01", "1,", "1;", "1%0A", "1%0D",
                                 "%201", "1%7F", "a1", "-1", "+1", "1.", "%C3%A91"}) {
            QCOMPARE(
                pedir(o, "publicarPremios2.php", std::string("&f=2026-11-22&j=9&s=90&a=") + malo),
                std::string());
            QCOMPARE(
                pedir(o, "publicarPremios2.php", std::string("&f=2026-11-22&j=1&s=1&a=") + malo),
                std::string());
        }
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM resultados"), 0LL);
        QVERIFY(contar(o, "SELECT COUNT(*) FROM auditoria WHERE detalle LIKE "
                          "'%rechazado: resultado no valido para el juego'") > 0);
        QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=9&s=90&a=07"), std::string("1"));
        QCOMPARE(pedir(o, "resultadosJuego.php", "&f=2026-11-22&j=9"), std::string("90,07\n"));
        // A damaged value kept from earlier never reaches a reply as it stands.
        o.conConexion([](sqlite3 *db) {
            ejecutarSql(db, "UPDATE resultados SET resultado = char(0) || 'x,;' || char(10) "
                            "WHERE resultado = '07'");
        });
        for (const char *e : {"resultadosJuego.php", "monitorresultados.php"}) {
            const std::string r = pedir(o, e, "&f=2026-11-22&j=9");
            QVERIFY2(r.find('\0') == std::string::npos, e);
            QVERIFY2(r.find("x  ") != std::string::npos, e);
        }
        QVERIFY(pedir(o, "cargarresultados.php", "").find('\0') == std::string::npos);
    }

    void sesionesQueCaducan()
    {
        const std::string ruta = m_dir.filePath("sesiones.db").toStdString();
        std::string inicio = "08:00:00";
        auto reloj = [&inicio] {
            return Momento{hoy, inicio};
        };
        {
            Oficina o(ruta);
            o.fijarReloj(reloj);
            OpcionesDemo op;
            op.agencias = 2;
            op.jugadasHoy = 0;
            op.diasPrevios = 0;
            QVERIFY(crearDemo(o, Momento{hoy, "07:00:00"}, op));
            o.fijarInactividad(3600);
            QCOMPARE(pedir(o, "validarUser.php", "u=admin&p=tornavo1").substr(0, 2),
                     std::string("1\n"));
            const std::string ventas = "d=2026-11-22&h=2026-11-22";
            QCOMPARE(pedir(o, "ventabancas2.php", ventas), std::string("\n"));
            // Activity keeps the session: 50 minutes, then 50 more.
            inicio = "08:50:00";
            QCOMPARE(pedir(o, "ventabancas2.php", ventas), std::string("\n"));
            inicio = "09:40:00";
            QCOMPARE(pedir(o, "ventabancas2.php", ventas), std::string("\n"));
            QCOMPARE(o.usuarioDeSesion(aqui), std::string("admin"));
            // The clock is not activity: an hour of it alone ends the session.
            inicio = "10:40:00";
            QVERIFY(!pedir(o, "datetime.php", "").empty());
            QCOMPARE(o.usuarioDeSesion(aqui), std::string());
            QCOMPARE(pedir(o, "ventabancas2.php", ventas), std::string());
            QCOMPARE(contar(o, "SELECT COUNT(*) FROM auditoria WHERE accion = 'ventabancas2.php' "
                               "AND detalle = 'rechazado: sin sesion'"),
                     1LL);
            QCOMPARE(pedir(o, "validarUser.php", "u=admin&p=tornavo1").substr(0, 2),
                     std::string("1\n"));
            QCOMPARE(pedir(o, "ventabancas2.php", ventas), std::string("\n"));
        }
        // A restart ends every session, even a fresh one.
        Oficina despues(ruta);
        despues.fijarReloj(reloj);
        QCOMPARE(despues.usuarioDeSesion(aqui), std::string());
        QCOMPARE(pedir(despues, "ventabancas2.php", "d=2026-11-22&h=2026-11-22"), std::string());
        // The default idle time is twelve hours.
        QCOMPARE(pedir(despues, "validarUser.php", "u=admin&p=tornavo1").substr(0, 2),
                 std::string("1\n"));
        inicio = "22:39:59";
        QCOMPARE(despues.usuarioDeSesion(aqui), std::string("admin"));
        inicio = "22:40:00";
        QCOMPARE(despues.usuarioDeSesion(aqui), std::string());
    }

    void intentosDeLogin()
    {
        QTemporaryDir dir;
        const std::string ruta = dir.filePath("login.db").toStdString();
        std::string hora = "08:00:00";
        Oficina o(ruta);
        o.fijarReloj([&hora] { return Momento{hoy, hora}; });
        o.crearUsuario("ana", "clave-ana", "Ana", true, "root", "root", "", "", "");
        o.crearUsuario("beto", "clave-beto", "Beto", true, "root", "root", "", "", "");

        // An unknown name costs what a wrong password costs.
        QElapsedTimer t;
        qint64 malaClave = 0, desconocido = 0;
        for (int i = 0; i < 2; ++i) {
            t.start();
            QCOMPARE(pedir(o, "validarUser.php", "u=beto&p=mala", "10.3.0." + std::to_string(i)),
                     std::string("0\n"));
            malaClave += t.elapsed();
            t.start();
            QCOMPARE(pedir(o, "validarUser.php", "u=nadie" + std::to_string(i) + "&p=mala",
                           "10.3.1." + std::to_string(i)),
                     std::string("0\n"));
            desconocido += t.elapsed();
        }
        QVERIFY2(desconocido * 2 > malaClave,
                 qPrintable(QString("%1 ms against %2 ms").arg(desconocido).arg(malaClave)));

        // Five failures of one address within a minute: then refused at once, even with the
        // right password, and for another user too.
        const std::string intruso = "10.3.2.1";
        for (int i = 0; i < 5; ++i)
            QCOMPARE(pedir(o, "validarUser.php", "u=ana&p=prueba" + std::to_string(i), intruso),
                     std::string("0\n"));
        t.start();
        QCOMPARE(pedir(o, "validarUser.php", "u=beto&p=clave-beto", intruso), std::string("0\n"));
        QVERIFY2(t.elapsed() < 100, "a throttled login still checked the password");
        // The user is throttled too, from any address.
        t.start();
        QCOMPARE(pedir(o, "validarUser.php", "u=ana&p=clave-ana", "10.3.2.2"), std::string("0\n"));
        QVERIFY(t.elapsed() < 100);
        // Another user from another address is not.
        QCOMPARE(pedir(o, "validarUser.php", "u=beto&p=clave-beto", "10.3.2.3").substr(0, 2),
                 std::string("1\n"));
        // A minute later both may try again.
        hora = "08:01:01";
        QCOMPARE(pedir(o, "validarUser.php", "u=ana&p=clave-ana", intruso).substr(0, 2),
                 std::string("1\n"));

        // Refusals are audited in bounded volume: a flood leaves a few rows and a count.
        hora = "08:10:30";
        for (int i = 0; i < 300; ++i)
            pedir(o, "validarUser.php", "u=ana&p=x" + std::to_string(i), "10.3.9.9");
        const long long filas =
            contar(o, "SELECT COUNT(*) FROM auditoria WHERE direccion = '10.3.9.9'");
        QVERIFY2(filas >= 5 && filas <= 12, qPrintable(QString::number(filas)));
        hora = "08:11:10";
        pedir(o, "validarUser.php", "u=ana&p=otra", "10.3.9.9");
        QCOMPARE(textoSql(o, "SELECT detalle FROM auditoria WHERE direccion = '10.3.9.9' "
                             "ORDER BY id DESC LIMIT 1"),
                 std::string("rechazado: demasiados intentos (y ") + std::to_string(300 - filas) +
                     " rechazos anteriores sin registrar)");
        // Unauthenticated calls are bounded the same way.
        for (int i = 0; i < 100; ++i)
            pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=1&a=05", "10.3.8.8");
        QVERIFY(contar(o, "SELECT COUNT(*) FROM auditoria WHERE direccion = '10.3.8.8'") <= 10);
    }

    void migracionDeUnaBaseAnterior()
    {
        // A database of the first version: animals "1" .. "9", plays and results on them.
        QTemporaryDir dir;
        const std::string ruta = dir.filePath("vieja.db").toStdString();
        {
            Oficina o(ruta);
            OpcionesDemo op;
            op.agencias = 4;
            op.jugadasHoy = 2000;
            op.diasPrevios = 1;
            op.jugadasDiaPrevio = 500;
            QVERIFY(crearDemo(o, relojFijo(), op));
            o.conConexion([](sqlite3 *db) {
                ejecutarSql(db, R"SQL(
                    DROP TRIGGER resumen_jugada;
                    DROP TRIGGER resumen_jugada_cambiada;
                    DROP TRIGGER resumen_premio;
                    DROP TRIGGER resumen_premio_retirado;
                    DROP TABLE ventas_resumen;
                    DROP INDEX jugadas_ticket;
                    DROP TRIGGER jugadas_antes_del_sorteo;
                    DROP INDEX jugadas_sorteo_hora;
                    ALTER TABLE juegos DROP COLUMN cifras;
                    CREATE TABLE sesiones(direccion TEXT PRIMARY KEY, usuario TEXT NOT NULL,
                                          momento TEXT NOT NULL);
                    UPDATE animales SET numero = substr(numero, 2) WHERE numero GLOB '0[1-9]';
                    UPDATE jugadas SET numero = substr(numero, 2) WHERE numero GLOB '0[1-9]'
                       AND sorteo_id IN (SELECT s.id FROM sorteos s JOIN juegos j
                                         ON j.id = s.juego_id WHERE j.tipo = 'A');
                    UPDATE resultados SET resultado = substr(resultado, 2)
                     WHERE resultado GLOB '0[1-9]' AND sorteo_id IN (SELECT s.id FROM sorteos s
                           JOIN juegos j ON j.id = s.juego_id WHERE j.tipo = 'A');
                    INSERT INTO resultados(sorteo_id, fecha, resultado, hora)
                    SELECT id, '2026-11-20', '5', '09:00:00' FROM sorteos WHERE juego_id = 1;
                    PRAGMA user_version = 1;)SQL");
            });
        }
        QCOMPARE(contar(*m_demo, "PRAGMA user_version"), 3LL);
        Oficina o(ruta);
        o.fijarReloj(relojFijo);
        QCOMPARE(contar(o, "PRAGMA user_version"), 3LL);
        // The reports' summary is built from the plays already there.
        QVERIFY(contar(o, "SELECT COUNT(*) FROM ventas_resumen") > 0);
        QVERIFY(resumenCuadra(o));
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM animales WHERE length(numero) = 1 AND "
                           "numero <> '0'"),
                 0LL);
        QCOMPARE(textoSql(o, "SELECT group_concat(numero) FROM (SELECT numero FROM animales "
                             "WHERE juego_id = 1 ORDER BY orden LIMIT 4)"),
                 std::string("0,00,01,02"));
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM jugadas jg JOIN sorteos s ON s.id = jg.sorteo_id "
                           "WHERE s.juego_id < 4 AND length(jg.numero) = 1 AND jg.numero <> '0'"),
                 0LL);
        // Number games keep their three digits untouched.
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM jugadas jg JOIN sorteos s ON s.id = jg.sorteo_id "
                           "WHERE s.juego_id = 4 AND length(jg.numero) <> 3"),
                 0LL);
        QCOMPARE(lineas(pedir(o, "resultadosJuego.php", "f=2026-11-20&j=1")).front(),
                 std::string("1,05"));
        // Old plays on "5" win with "05" now, and the awards already given still match.
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM premios p JOIN jugadas j ON j.id = p.jugada_id "
                           "JOIN resultados r ON r.id = p.resultado_id "
                           "WHERE j.numero <> r.resultado"),
                 0LL);
        QCOMPARE(pedir(o, "validarUser.php", "u=admin&p=tornavo1").substr(0, 2),
                 std::string("1\n"));
        const auto calculo = lineas(pedir(o, "calcularpremios4.php", "&f=2026-11-22&j=1&s=7&a=05"));
        QCOMPARE(static_cast<long long>(calculo.size()) - 1,
                 contar(o, "SELECT COUNT(*) FROM jugadas WHERE sorteo_id = 7 AND fecha = "
                           "'2026-11-22' AND numero = '05' AND eliminada = 0"));
        QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=7&a=05"), std::string("1"));
        QCOMPARE(pedir(o, "publicarPremios2.php", "&f=2026-11-22&j=1&s=7&a=5"), std::string());
        QCOMPARE(textoSql(o, "PRAGMA integrity_check"), std::string("ok"));
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM sqlite_master WHERE name = 'sesiones'"), 0LL);
    }

    // ---- hostile values -------------------------------------------------------------------

    void valoresHostiles()
    {
        Oficina &o = *m_demo;
        const std::string antes = huella(o);
        const std::string usuarios =
            textoSql(o, "SELECT group_concat(usuario || clave_hash) FROM usuarios");
        const std::vector<std::string> valores = {"'",
                                                  "\"",
                                                  "';--",
                                                  "' OR '1'='1",
                                                  "1' OR 1=1 --",
                                                  "1; DROP TABLE jugadas; --",
                                                  "'); DELETE FROM resultados; --",
                                                  "1-1:' OR '1'='1",
                                                  "%27%20OR%20%271%27%3D%271",
                                                  "%00",
                                                  "\\",
                                                  "2026-11-22' OR ''='",
                                                  "%",
                                                  "_FIN_",
                                                  "a\nb",
                                                  std::string(100000, 'x'),
                                                  std::string(20000, '\''),
                                                  "0 UNION SELECT clave_hash FROM usuarios"};
        const std::vector<std::pair<std::string, std::vector<std::string>>> endpoints = {
            {"validarUser.php", {"u", "p"}},
            {"datetime.php", {"x"}},
            {"sorteospremiar3.php", {"x"}},
            {"resultadosJuego.php", {"f", "j"}},
            {"calcularpremios4.php", {"f", "j", "s", "a"}},
            {"publicarPremios2.php", {"f", "j", "s", "a"}},
            {"deshacerpremios.php", {"f", "j", "s"}},
            {"cargarsorteos.php", {"x"}},
            {"cargarresultados.php", {"x"}},
            {"autopremiar.php", {"j", "s", "a"}},
            {"monitorsorteos2.php", {"u"}},
            {"bancasactivas.php", {"x"}},
            {"monitoragencias.php", {"x"}},
            {"monitorresultados.php", {"f"}},
            {"monitorventas.php", {"f", "j"}},
            {"ventabancas2.php", {"d", "h"}},
            {"reportex.php", {"bx", "j", "d", "h"}},
            {"sorteospendientes.php", {"g"}}};
        // Good values for the other keys, so that each hostile value reaches the SQL.
        const Parametros buenos = {{"u", "admin"}, {"p", "tornavo1"},
                                   {"f", hoy},     {"j", "1"},
                                   {"s", "8"},     {"a", "5"},
                                   {"d", ayer},    {"h", hoy},
                                   {"bx", "SB01"}, {"g", "resultados_demo"}};
        for (const auto &e : endpoints) {
            for (const std::string &clave : e.second) {
                for (const std::string &v : valores) {
                    Parametros p = buenos;
                    if (e.first == "monitorventas.php")
                        p["j"] = "1-3:";
                    p[clave] = v;
                    const std::string r = o.atender(e.first, p, aqui);
                    if (e.first == "validarUser.php")
                        QCOMPARE(r, std::string("0\n"));
                    if (e.first == "monitorventas.php" && clave == "j")
                        QCOMPARE(r, std::string());
                    if (e.first == "calcularpremios4.php" && clave == "a")
                        QCOMPARE(lineas(r).size(), size_t(1));
                    if (e.first == "publicarPremios2.php" || e.first == "autopremiar.php" ||
                        e.first == "deshacerpremios.php")
                        QCOMPARE(r, std::string());
                    // The raw query form too, with the value as sent on the wire (the
                    // password check is slow by design: once is enough for it).
                    if (e.first != "validarUser.php")
                        o.atenderConsulta(e.first, "&" + clave + "=" + v, aqui);
                }
            }
        }
        QCOMPARE(huella(o), antes);
        QCOMPARE(textoSql(o, "SELECT group_concat(usuario || clave_hash) FROM usuarios"), usuarios);
        QCOMPARE(textoSql(o, "PRAGMA integrity_check"), std::string("ok"));
        // Audit rows keep huge values short.
        QVERIFY(contar(o, "SELECT MAX(length(usuario) + length(detalle)) FROM auditoria") < 1000);
    }

    void consultaMalformada()
    {
        Oficina &o = *m_demo;
        for (const char *q : {"", "?", "&", "&&&", "=", "==", "&=&=", "f", "f=", "%", "%%%",
                              "f=%ZZ&j=%", "?&f=2026-11-22&&j=1-3:&"}) {
            for (const char *e : {"monitorventas.php", "calcularpremios4.php", "reportex.php",
                                  "ventabancas2.php", "resultadosJuego.php", "validarUser.php"})
                o.atenderConsulta(e, q, aqui);
        }
        QCOMPARE(
            lineas(o.atenderConsulta("monitorventas.php", "?&f=2026-11-22&&j=1-3:&", aqui)).size(),
            static_cast<size_t>(contar(o, "SELECT COUNT(*) FROM jugadas WHERE sorteo_id = 3 "
                                          "AND fecha = '2026-11-22'")));
    }

    // ---- demo network ----------------------------------------------------------------------

    void redDeDemostracion()
    {
        QTemporaryDir dir;
        Oficina o(dir.filePath("completa.db").toStdString());
        o.fijarReloj(relojFijo);
        QElapsedTimer reloj;
        reloj.start();
        QVERIFY(crearDemo(o, relojFijo()));
        QVERIFY2(reloj.elapsed() < 15000, "the demo network takes too long");
        QVERIFY(!crearDemo(o, relojFijo())); // only once
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM agencias"), 300LL);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM superbancas"), 2LL);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM bancas"), 6LL);
        QVERIFY(contar(o, "SELECT COUNT(*) FROM jefes") >= 12);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM jugadas WHERE fecha = '2026-11-22'"), 40000LL);
        QVERIFY(
            contar(o, "SELECT COUNT(*) FROM jugadas WHERE fecha = '2026-11-22' AND eliminada = 1") >
            0);
        QVERIFY(
            contar(o, "SELECT COUNT(*) FROM jugadas WHERE fecha = '2026-11-22' AND pagada = 1") >
            0);
        // No play sold after now, nor after its draw.
        QCOMPARE(
            contar(o,
                   "SELECT COUNT(*) FROM jugadas WHERE fecha = '2026-11-22' AND hora > '14:05:00'"),
            0LL);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM jugadas j JOIN sorteos s ON s.id = j.sorteo_id "
                           "WHERE j.hora >= s.hora"),
                 0LL);
        // Results only for the draws already past, except the automatic game's last one.
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM resultados r JOIN sorteos s ON s.id = r.sorteo_id "
                           "WHERE r.fecha = '2026-11-22' AND s.hora > '14:05:00'"),
                 0LL);
        QCOMPARE(
            contar(
                o,
                "SELECT COUNT(*) FROM sorteos s WHERE s.hora <= '14:05:00' AND NOT EXISTS "
                "(SELECT 1 FROM resultados r WHERE r.sorteo_id = s.id AND r.fecha = '2026-11-22')"),
            1LL);
        // Every award is amount × dividend ÷ divisor of a play that matches its result.
        QCOMPARE(
            contar(
                o,
                "SELECT COUNT(*) FROM premios p JOIN jugadas j ON j.id = p.jugada_id "
                "JOIN sorteos s ON s.id = j.sorteo_id JOIN resultados r ON r.id = p.resultado_id "
                "WHERE p.monto * s.divisor <> j.monto * s.dividendo OR j.numero <> r.resultado "
                "OR j.eliminada = 1"),
            0LL);
        QVERIFY(contar(o, "SELECT COUNT(*) FROM premios") > 100);
        QCOMPARE(textoSql(o, "SELECT nombre FROM animales WHERE numero = '0' LIMIT 1"),
                 std::string("Delfín"));
        QCOMPARE(textoSql(o, "SELECT nombre FROM animales WHERE numero = '36' LIMIT 1"),
                 std::string("Culebra"));
        QCOMPARE(textoSql(o, "PRAGMA journal_mode"), std::string("wal"));
        QCOMPARE(contar(o, "PRAGMA foreign_keys"), 1LL);
        QCOMPARE(contar(o, "PRAGMA foreign_key_check"), -1LL); // no row: no broken reference

        // The simulator sells on open draws only.
        std::mt19937 azar(7);
        const long long antes = contar(o, "SELECT COUNT(*) FROM tickets");
        QVERIFY(simularVentas(o, azar, 20) > 0);
        QVERIFY(contar(o, "SELECT COUNT(*) FROM tickets") > antes);
        QCOMPARE(contar(o, "SELECT COUNT(*) FROM jugadas j JOIN sorteos s ON s.id = j.sorteo_id "
                           "WHERE j.fecha = '2026-11-22' AND j.hora > '14:05:00' "
                           "AND s.hora <= '14:05:00'"),
                 0LL);
    }

    void animalesDeLaLista()
    {
        const auto a = animalesDemo();
        QCOMPARE(a.size(), size_t(38));
        QCOMPARE(a[0].numero, std::string("0"));
        QCOMPARE(a[1].numero, std::string("00"));
        QCOMPARE(a[1].nombre, std::string("Ballena"));
        // Every number above 0 has two digits, as the console pads what is typed.
        QCOMPARE(a[2].numero, std::string("01"));
        QCOMPARE(a[7].numero, std::string("06"));
        QCOMPARE(a[7].nombre, std::string("Rana"));
        for (const AnimalDemo &x : a)
            QVERIFY2(x.numero.size() == 2 || x.numero == "0", x.numero.c_str());
        QCOMPARE(leerAnimales("# x\n\n1;Uno\r\nmal\n2;Dos").size(), size_t(2));
    }
};

TORNAVO_PRUEBA_MAIN(PruebaOficina)
#include "tst_oficina.moc"
