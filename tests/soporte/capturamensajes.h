#pragma once

#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

// What a test saw of one modal message box.
struct MensajeVisto {
    QString titulo;
    QString texto;
    QString informativo;
    QMessageBox::Icon icono = QMessageBox::NoIcon;
    QString rutaIcono;   // picture of the console's own box, "" for other boxes
    int altoIcono = 0;   // height of the icon pixmap
    QStringList botones; // texts in the order the box's button row lays them out
    QList<QMessageBox::ButtonRole> roles;
    QList<int> anchosBotones; // fixed widths (0 when none was set)
    QString pulsado;          // text of the button the catcher pressed

    // Role of the button with this text; InvalidRole when there is none.
    QMessageBox::ButtonRole rolDe(const QString &texto) const
    {
        const int i = botones.indexOf(texto);
        return i < 0 ? QMessageBox::InvalidRole : roles.at(i);
    }
};

// Watches for modal message boxes while it lives. Each box it finds is recorded and closed by
// pressing a button: the next text queued with responder(), or else the box's first
// accept/yes-role button (its first button when it has none).
class CapturaMensajes : public QObject {
    Q_OBJECT

public:
    explicit CapturaMensajes(QObject *parent = nullptr);

    // Queues the text of the button to press on the next box.
    void responder(const QString &textoBoton);

    int cantidad() const { return m_vistos.size(); }
    const QList<MensajeVisto> &vistos() const { return m_vistos; }
    MensajeVisto ultimo() const { return m_vistos.value(m_vistos.size() - 1); }

    // Processes events until `n` boxes were seen or the time ran out; true when seen.
    bool esperar(int n = 1, int milisegundos = 20000);

    void olvidar() { m_vistos.clear(); }

private:
    void revisar();

    QTimer m_timer;
    QStringList m_respuestas;
    QList<MensajeVisto> m_vistos;
};
