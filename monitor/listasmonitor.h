#pragma once

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

// The server tables the sales monitor works with, kept as parallel lists (entry i of one list
// belongs with entry i of its partners), plus hash indexes built while the lists are filled.
// Every lookup answers what a scan of the whole list would answer when the last match wins;
// the indexes only make it cost O(1) instead of O(n).
class ListasMonitor {
public:
    // Draws (combo order): game code, draw name, prize factor, draw code.
    QStringList codigosJuego;
    QStringList nombresSorteo;
    QList<double> factoresSorteo;
    QStringList codigosSorteo;
    // Bancas.
    QStringList codigosBanca;
    QStringList nombresBanca;
    // Agencies, one entry per agency and game: long code, name, game code, commission %.
    QStringList clavesAgencia;
    QStringList nombresAgencia;
    QStringList juegosComision;
    QStringList comisiones;
    // Animals of the draws' games: game code + animal code, animal name.
    QStringList clavesAnimal;
    QStringList nombresAnimal;
    // Results of the chosen date.
    QStringList juegosResultado;
    QStringList sorteosResultado;
    QStringList resultados;
    // Banca codes in the order of the banca totals.
    QStringList indiceBancas;

    // Draws reply ("monitorsorteos2.php"): empties the animals, appends the active draws to the
    // draw lists (which are never emptied) and returns the combo texts, one per active draw.
    QStringList cargarSorteos(const QString &texto);
    // Bancas reply: replaces the bancas and appends their codes to indiceBancas. Returns how
    // many bancas were appended (one banca-total entry each).
    int cargarBancas(const QString &texto);
    // Agencies reply: replaces the four agency lists.
    void cargarAgencias(const QString &texto);
    // Results reply: the first line is a header; replaces the three result lists.
    void cargarResultados(const QString &texto);

    QString banca(const QString &cbanca) const;
    QString agencia(const QString &longCodAgencia) const;
    QString animal(const QString &cjuego, const QString &canimal) const;
    bool hayResultado(const QString &cjuego, const QString &csorteo) const;
    QString resultado(const QString &cjuego, const QString &csorteo) const;
    QString comisionAgencia(const QString &agencia, const QString &cjuego) const;
    // Position of the banca in indiceBancas (last match); -1 when it is not there.
    int indiceBanca(const QString &cbanca) const;

private:
    void indexarAnimales();

    QHash<QString, int> m_banca;
    QHash<QString, int> m_agencia;
    QHash<QString, int> m_animal;
    QHash<QString, int> m_indiceBancas;
    QHash<QPair<QString, QString>, int> m_resultado;
    QHash<QPair<QString, QString>, int> m_comision;
};

// Lines of a reply with the empty ones dropped.
QStringList lineasReply(const QString &texto);
