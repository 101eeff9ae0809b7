#include "monitor/listasmonitor.h"

QStringList lineasReply(const QString &texto)
{
    return texto.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList ListasMonitor::cargarSorteos(const QString &texto)
{
    clavesAnimal.clear();
    nombresAnimal.clear();
    m_animal.clear();
    QStringList combo;
    if (texto.isEmpty())
        return combo;
    for (const QString &linea : lineasReply(texto)) {
        const QStringList f = linea.split(QLatin1Char(';'));
        if (f.value(2) != QLatin1String("1"))
            continue;
        const double factor = f.value(4).toDouble() / f.value(3).toDouble();
        const QString cjuego = f.value(0);
        const bool nuevo = !codigosJuego.contains(cjuego);
        codigosJuego.append(cjuego);
        nombresSorteo.append(f.value(1));
        factoresSorteo.append(factor);
        codigosSorteo.append(f.value(7));
        combo.append(f.value(1) + QLatin1Char(' ') + f.value(8));
        if (!nuevo)
            continue;
        const QStringList codigos = f.value(5).split(QLatin1Char(','));
        const QStringList nombres = f.value(6).split(QLatin1Char(','));
        for (int j = 0; j < codigos.size(); ++j) {
            clavesAnimal.append(cjuego + codigos.at(j));
            nombresAnimal.append(nombres.value(j));
        }
    }
    indexarAnimales();
    return combo;
}

void ListasMonitor::indexarAnimales()
{
    m_animal.clear();
    m_animal.reserve(clavesAnimal.size());
    for (int i = 0; i < clavesAnimal.size(); ++i)
        m_animal.insert(clavesAnimal.at(i), i);
}

int ListasMonitor::cargarBancas(const QString &texto)
{
    codigosBanca.clear();
    nombresBanca.clear();
    m_banca.clear();
    int agregadas = 0;
    for (const QString &linea : lineasReply(texto)) {
        const QStringList f = linea.split(QLatin1Char(','));
        codigosBanca.append(f.value(0));
        nombresBanca.append(f.value(1));
        m_banca.insert(f.value(0), codigosBanca.size() - 1);
        indiceBancas.append(f.value(0));
        m_indiceBancas.insert(f.value(0), indiceBancas.size() - 1);
        ++agregadas;
    }
    return agregadas;
}

void ListasMonitor::cargarAgencias(const QString &texto)
{
    clavesAgencia.clear();
    nombresAgencia.clear();
    juegosComision.clear();
    comisiones.clear();
    m_agencia.clear();
    m_comision.clear();
    for (const QString &linea : lineasReply(texto)) {
        const QStringList f = linea.split(QLatin1Char(','));
        const QString clave = f.value(0) + f.value(1) + f.value(2) + f.value(3);
        clavesAgencia.append(clave);
        nombresAgencia.append(f.value(4));
        juegosComision.append(f.value(5));
        comisiones.append(f.value(6));
        const int i = clavesAgencia.size() - 1;
        m_agencia.insert(clave, i);
        m_comision.insert(qMakePair(clave, f.value(5)), i);
    }
}

void ListasMonitor::cargarResultados(const QString &texto)
{
    juegosResultado.clear();
    sorteosResultado.clear();
    resultados.clear();
    m_resultado.clear();
    const QStringList lineas = lineasReply(texto);
    for (int l = 1; l < lineas.size(); ++l) {
        const QStringList f = lineas.at(l).split(QLatin1Char(','));
        juegosResultado.append(f.value(0));
        sorteosResultado.append(f.value(1));
        resultados.append(f.value(2));
        m_resultado.insert(qMakePair(f.value(0), f.value(1)), resultados.size() - 1);
    }
}

QString ListasMonitor::banca(const QString &cbanca) const
{
    const int i = m_banca.value(cbanca, -1);
    return i < 0 ? QString() : nombresBanca.at(i);
}

QString ListasMonitor::agencia(const QString &longCodAgencia) const
{
    const int i = m_agencia.value(longCodAgencia, -1);
    return i < 0 ? QString() : nombresAgencia.at(i);
}

QString ListasMonitor::animal(const QString &cjuego, const QString &canimal) const
{
    const int i = m_animal.value(cjuego + canimal, -1);
    return i < 0 ? QString() : nombresAnimal.at(i);
}

bool ListasMonitor::hayResultado(const QString &cjuego, const QString &csorteo) const
{
    return m_resultado.contains(qMakePair(cjuego, csorteo));
}

QString ListasMonitor::resultado(const QString &cjuego, const QString &csorteo) const
{
    const int i = m_resultado.value(qMakePair(cjuego, csorteo), -1);
    return i < 0 ? QString() : resultados.at(i);
}

QString ListasMonitor::comisionAgencia(const QString &agencia, const QString &cjuego) const
{
    const int i = m_comision.value(qMakePair(agencia, cjuego), -1);
    return i < 0 ? QString() : comisiones.at(i);
}

int ListasMonitor::indiceBanca(const QString &cbanca) const
{
    return m_indiceBancas.value(cbanca, -1);
}
