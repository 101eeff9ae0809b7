#include "reportes/calculoreportes.h"

#include "app/formato.h"

#include <algorithm>
#include <cmath>

namespace {

const QString kFin = QStringLiteral("_FIN_");

QString claveComision(const QString &banca, const QString &juego)
{
    return banca + QLatin1Char('\n') + juego;
}

// Nearest whole number, half away from zero; 0 when not finite, and bounded far beyond any real
// amount but well inside a 64-bit integer.
qint64 enteroCercano(double valor)
{
    constexpr double limite = 1e15;
    if (!std::isfinite(valor))
        return 0;
    return qint64(std::clamp(std::round(valor), -limite, limite));
}

} // namespace

double montoDeTexto(const QString &texto)
{
    bool ok = false;
    const double valor = texto.trimmed().toDouble(&ok);
    return ok && std::isfinite(valor) ? valor : 0.0;
}

QStringList lineasDeTexto(const QString &texto)
{
    QStringList lineas;
    const QStringList partes = texto.split(QLatin1Char('\n'));
    lineas.reserve(partes.size());
    for (QString linea : partes) {
        if (linea.endsWith(QLatin1Char('\r')))
            linea.chop(1);
        if (!linea.isEmpty())
            lineas.append(linea);
    }
    return lineas;
}

// ---------------------------------------------------------------------------------------------

ReporteVentasBancas calcularVentasBancas(const QString &respuesta)
{
    ReporteVentasBancas r;
    QHash<QString, int> indiceBanca;
    const QStringList lineas = lineasDeTexto(respuesta);
    r.agencias.reserve(lineas.size());
    for (const QString &linea : lineas) {
        const QStringList f = linea.split(QLatin1Char(','));
        FilaAgencia a;
        a.banca = f.value(0) + QLatin1Char('-') + f.value(1);
        a.agencia = f.value(2) + QLatin1Char('-') + f.value(3);
        a.ventaBruta = redondearCentavos(montoDeTexto(f.value(5)));
        a.otroMonto = redondearCentavos(montoDeTexto(f.value(6)));
        a.comision = redondearCentavos(montoDeTexto(f.value(7)));
        a.horaUltimaVenta = QTime::fromString(f.value(8));
        r.agencias.append(a);

        const QString clave = f.value(0);
        const auto it = indiceBanca.constFind(clave);
        if (it == indiceBanca.constEnd()) {
            indiceBanca.insert(clave, r.bancas.size());
            FilaBanca b;
            b.clave = clave;
            b.nombre = f.value(1);
            b.agencias = 1;
            b.ventaBruta = a.ventaBruta;
            b.comision = a.comision;
            r.bancas.append(b);
        } else {
            FilaBanca &b = r.bancas[it.value()];
            b.agencias += 1;
            b.ventaBruta = sumarMontos(b.ventaBruta, a.ventaBruta);
            b.comision = sumarMontos(b.comision, a.comision);
        }
        r.totalVenta = sumarMontos(r.totalVenta, a.ventaBruta);
        r.totalComision = sumarMontos(r.totalComision, a.comision);
    }
    return r;
}

QString textoHoraVenta(const QTime &hora)
{
    return hora.isValid() ? textoConsola(hora, QStringLiteral("h:mm ap")) : QString();
}

// ---------------------------------------------------------------------------------------------

QString seccionReporte(const QString &respuesta, int numero)
{
    int inicio = 0;
    for (int i = 1; i < numero; ++i) {
        const int fin = respuesta.indexOf(kFin, inicio);
        if (fin < 0)
            return QString();
        inicio = fin + kFin.size();
    }
    if (numero >= 3)
        return respuesta.mid(inicio);
    const int fin = respuesta.indexOf(kFin, inicio);
    return fin < 0 ? respuesta.mid(inicio) : respuesta.mid(inicio, fin - inicio);
}

CifrasReporte cifrasLinea(double bruta, double premios, double pComision, double pParticipacion)
{
    CifrasReporte c;
    c.ventaBruta = redondearCentavos(bruta);
    // Percent of a whole number of cents: an exact half cent rounds away from zero.
    c.comision = deCentavos(enteroCercano(aCentavos(c.ventaBruta) * pComision / 100.0));
    c.premios = redondearCentavos(premios);
    c.participacion = deCentavos(enteroCercano(aCentavos(c.utilidad()) * pParticipacion / 100.0));
    return c;
}

void ReporteSuperBanca::limpiar()
{
    *this = ReporteSuperBanca();
}

void ReporteSuperBanca::cargar(const QString &respuesta)
{
    limpiar();

    for (const QString &linea : lineasDeTexto(seccionReporte(respuesta, 1))) {
        const QStringList f = linea.split(QLatin1Char(','));
        m_indiceJuego.insert(f.value(0), juegoCodigos.size());
        juegoCodigos.append(f.value(0));
        juegoNombres.append(f.value(1));
    }

    for (const QString &linea : lineasDeTexto(seccionReporte(respuesta, 2))) {
        const QStringList f = linea.split(QLatin1Char(','));
        // A later row for the same pair replaces the earlier one.
        m_indiceComision.insert(claveComision(f.value(0), f.value(1)), comBancas.size());
        comBancas.append(f.value(0));
        comJuegos.append(f.value(1));
        comPorcentajes.append(montoDeTexto(f.value(2)));
        parPorcentajes.append(montoDeTexto(f.value(3)));
    }

    const QStringList ventas = lineasDeTexto(seccionReporte(respuesta, 3));
    m_lineasVenta = ventas.size();
    for (const QString &linea : ventas) {
        const QStringList f = linea.split(QLatin1Char(','));
        const QString banca = f.value(0);
        const QString juego = f.value(2);
        const QList<double> p = pcomision(banca, juego);
        if (!(p.at(0) > 0.0))
            continue; // no positive commission for this banca and game: not in the report
        const CifrasReporte c =
            cifrasLinea(montoDeTexto(f.value(3)), montoDeTexto(f.value(4)), p.at(0), p.at(1));
        ventaBancas.append(banca);
        ventaNombresBanca.append(f.value(1));
        ventaJuegos.append(juego);
        ventaBrutas.append(c.ventaBruta);
        ventaPremios.append(c.premios);
        ventaComisiones.append(c.comision);
        ventaParticipaciones.append(c.participacion);

        const auto it = m_indiceBanca.constFind(banca);
        if (it == m_indiceBanca.constEnd()) {
            m_indiceBanca.insert(banca, bancaClaves.size());
            bancaClaves.append(banca);
            bancaNombres.append(f.value(1));
            bancaBrutas.append(c.ventaBruta);
            bancaComisiones.append(c.comision);
            bancaPremios.append(c.premios);
            bancaParticipaciones.append(c.participacion);
        } else {
            const int i = it.value();
            bancaBrutas[i] = sumarMontos(bancaBrutas[i], c.ventaBruta);
            bancaComisiones[i] = sumarMontos(bancaComisiones[i], c.comision);
            bancaPremios[i] = sumarMontos(bancaPremios[i], c.premios);
            bancaParticipaciones[i] = sumarMontos(bancaParticipaciones[i], c.participacion);
        }
    }
}

QList<double> ReporteSuperBanca::pcomision(const QString &cban, const QString &cjue) const
{
    const auto it = m_indiceComision.constFind(claveComision(cban, cjue));
    if (it == m_indiceComision.constEnd())
        return {0.0, 0.0};
    return {comPorcentajes.at(it.value()), parPorcentajes.at(it.value())};
}

QString ReporteSuperBanca::nombreJuego(const QString &codigo) const
{
    const auto it = m_indiceJuego.constFind(codigo);
    return it == m_indiceJuego.constEnd() ? QString() : juegoNombres.at(it.value());
}

CifrasReporte ReporteSuperBanca::cifrasBanca(int fila) const
{
    CifrasReporte c;
    c.ventaBruta = bancaBrutas.value(fila);
    c.comision = bancaComisiones.value(fila);
    c.premios = bancaPremios.value(fila);
    c.participacion = bancaParticipaciones.value(fila);
    return c;
}

CifrasReporte ReporteSuperBanca::cifrasVenta(int linea) const
{
    CifrasReporte c;
    c.ventaBruta = ventaBrutas.value(linea);
    c.comision = ventaComisiones.value(linea);
    c.premios = ventaPremios.value(linea);
    c.participacion = ventaParticipaciones.value(linea);
    return c;
}

CifrasReporte ReporteSuperBanca::totales() const
{
    CifrasReporte t;
    for (int i = 0; i < bancaClaves.size(); ++i)
        t.sumar(cifrasBanca(i));
    return t;
}

QVector<int> ReporteSuperBanca::lineasDeBanca(const QString &clave) const
{
    QVector<int> lineas;
    for (int i = 0; i < ventaBancas.size(); ++i)
        if (ventaBancas.at(i) == clave)
            lineas.append(i);
    return lineas;
}
