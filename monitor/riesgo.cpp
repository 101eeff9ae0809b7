#include "monitor/riesgo.h"

#include "app/formato.h"

#include <algorithm>
#include <cmath>

namespace {

// The prize of a row exceeds `limite` percent of the net sale.
bool excede(std::int64_t premio, std::int64_t ventaNeta, double limite)
{
    return double(premio) * 100.0 > limite * double(ventaNeta);
}

} // namespace

bool Riesgo::porcentaje(const FilaRiesgo &f, double &valor) const
{
    if (ventaNeta <= 0)
        return false;
    valor = double(f.premio) * 100.0 / double(ventaNeta);
    return true;
}

QString Riesgo::resumen(int decimales) const
{
    if (filas.empty())
        return QString();
    const FilaRiesgo &peor = filas.front();
    QString texto = sobreLimite == 1
                        ? QStringLiteral("1 número sobre el límite")
                        : QString::number(sobreLimite) + QStringLiteral(" números sobre el límite");
    texto += QStringLiteral(" · peor: ") + peor.numero;
    if (!peor.nombre.isEmpty())
        texto += QLatin1Char('-') + peor.nombre;
    texto += QStringLiteral(" paga ") + formatoMonto(deCentavos(peor.premio), decimales);
    double p = 0;
    if (porcentaje(peor, p))
        texto += QStringLiteral(" (") + QString::number(std::llround(p)) +
                 QStringLiteral(" % de la venta neta)");
    else
        texto += QStringLiteral(" (sin venta neta)");
    return texto;
}

Riesgo calcularRiesgo(const DatosVentas &d, double factor, double limite)
{
    Riesgo r;
    r.ventaNeta = d.ventaNeta();
    r.limite = limite;
    r.factor = factor;
    r.jugadoLimite = factor > 0 ? limite / 100.0 * double(r.ventaNeta) / factor : 0.0;
    r.filas.reserve(d.resumen.size());
    for (const DatosVentas::FilaResumen &fr : d.resumen) {
        const DatosVentas::Numero &n = d.numeros[std::size_t(fr.numero)];
        FilaRiesgo f;
        f.numero = n.texto;
        f.nombre = n.nombre;
        f.jugado = n.centavos;
        f.premio = n.premio;
        f.resultado = r.ventaNeta - n.premio;
        f.sobreLimite = excede(n.premio, r.ventaNeta, limite);
        f.ganador = d.hayResultado && fr.numero == d.numeroGanador;
        r.sobreLimite += f.sobreLimite ? 1 : 0;
        r.filas.push_back(f);
    }
    std::stable_sort(r.filas.begin(), r.filas.end(),
                     [](const FilaRiesgo &a, const FilaRiesgo &b) { return a.premio > b.premio; });
    return r;
}
