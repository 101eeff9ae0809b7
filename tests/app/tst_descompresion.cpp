#include "app/descompresion.h"
#include "tests/soporte/respuestas.h"

#include <QRandomGenerator>
#include <QTest>

// Decoding a reply body piece by piece, by its Content-Encoding.
class TstDescompresion : public QObject {
    Q_OBJECT

    // Feeds `cuerpo` in pieces of up to `maximo` bytes; `bien` gets whether every piece was
    // taken.
    static QByteArray decodificar(const QByteArray &codificacion, const QByteArray &cuerpo,
                                  int maximo, bool *bien = nullptr, bool *completo = nullptr)
    {
        DecodificadorCuerpo d(codificacion);
        QByteArray salida;
        const auto destino = [&salida](const char *p, qint64 n) {
            salida.append(p, int(n));
        };
        QRandomGenerator g(5);
        bool todo = true;
        for (int i = 0; i < cuerpo.size();) {
            const int n = std::min(cuerpo.size() - i, 1 + g.bounded(maximo));
            todo = d.agregar(cuerpo.constData() + i, n, destino) && todo;
            i += n;
        }
        if (bien)
            *bien = todo;
        if (completo)
            *completo = d.completo();
        return salida;
    }

    static QByteArray texto(int lineas)
    {
        QRandomGenerator g(9);
        QByteArray r;
        for (int i = 0; i < lineas; ++i)
            r += QByteArray::number(g.bounded(30)) + ",10:00:00,0,0," +
                 QByteArray::number(g.bounded(3000)) + ",T" + QByteArray::number(i / 3) +
                 ",,7,10.00,0,,\n";
        return r;
    }

private slots:
    void sinCodificacionPasaTalCual()
    {
        const QByteArray t = texto(100);
        for (const QByteArray &c :
             {QByteArray(), QByteArray("identity"), QByteArray(" Identity ")}) {
            bool bien = false, completo = false;
            QCOMPARE(decodificar(c, t, 7, &bien, &completo), t);
            QVERIFY(bien);
            QVERIFY(completo);
        }
    }

    // Whatever the pieces, and also when one piece gives more than the decoder's buffer.
    void gzipYDeflateEnTrozos()
    {
        const QByteArray t = texto(40000); // about 1.5 MB
        for (int maximo : {1, 13, 4096, 1 << 22}) {
            bool bien = false, completo = false;
            QCOMPARE(decodificar("gzip", comprimido(t), maximo, &bien, &completo), t);
            QVERIFY(bien && completo);
            QCOMPARE(decodificar("deflate", comprimido(t, true), maximo, &bien, &completo), t);
            QVERIFY(bien && completo);
        }
        QCOMPARE(decodificar("X-GZIP", comprimido(t, false, 1), 65536), t);
    }

    // A body made of several gzip members one after another is every member's text.
    void variosMiembrosGzip()
    {
        const QByteArray a = texto(500), b = "otra,linea\n", c = texto(3);
        const QByteArray cuerpo = comprimido(a) + comprimido(b, false, 1) + comprimido(c);
        bool bien = false, completo = false;
        QCOMPARE(decodificar("gzip", cuerpo, 100, &bien, &completo), a + b + c);
        QVERIFY(bien && completo);
    }

    void cuerpoVacio()
    {
        bool bien = false, completo = false;
        QCOMPARE(decodificar("gzip", QByteArray(), 10, &bien, &completo), QByteArray());
        QVERIFY(bien && completo);
        QCOMPARE(decodificar("gzip", comprimido(QByteArray()), 3, &bien, &completo), QByteArray());
        QVERIFY(bien && completo);
    }

    // A broken stream stops the decoder for good; a cut one is not whole; an encoding it does
    // not know is read as nothing.
    void cuerposRotos()
    {
        const QByteArray t = texto(2000);
        QByteArray roto = comprimido(t);
        for (int i = roto.size() / 3; i < roto.size() / 3 + 64; ++i)
            roto[i] = char(roto[i] ^ 0x5a);
        bool bien = true, completo = true;
        const QByteArray parte = decodificar("gzip", roto, 512, &bien, &completo);
        QVERIFY(!bien);
        QVERIFY(!completo);
        QVERIFY(parte.size() < t.size());

        const QByteArray gz = comprimido(t);
        QCOMPARE(decodificar("gzip", gz.left(gz.size() - 9), 512, &bien, &completo),
                 t.left(decodificar("gzip", gz.left(gz.size() - 9), 512).size()));
        QVERIFY(bien);
        QVERIFY(!completo);

        QCOMPARE(decodificar("gzip", QByteArray("esto no es gzip\n"), 4, &bien, &completo),
                 QByteArray());
        QVERIFY(!bien && !completo);

        QCOMPARE(decodificar("br", t, 100, &bien, &completo), QByteArray());
        QVERIFY(!bien && !completo);

        // Something that is no gzip after a whole member is a broken body too.
        QCOMPARE(decodificar("gzip", comprimido("a\n") + "basura", 3, &bien, &completo),
                 QByteArray("a\n"));
        QVERIFY(!bien && !completo);
    }
};

QTEST_GUILESS_MAIN(TstDescompresion)
#include "tst_descompresion.moc"
