#include "tests/soporte/servidorprueba.h"

#include <httplib.h>

#include <chrono>

namespace {

std::string endpointDe(const std::string &ruta)
{
    const auto barra = ruta.rfind('/');
    return barra == std::string::npos ? ruta : ruta.substr(barra + 1);
}

} // namespace

ServidorPrueba::ServidorPrueba() : m_servidor(std::make_unique<httplib::Server>())
{
    m_servidor->set_keep_alive_timeout(0);
    m_servidor->Get(".*", [this](const httplib::Request &req, httplib::Response &res) {
        const std::string endpoint = endpointDe(req.path);
        std::string cuerpo;
        Generador generador;
        int demora = 0;
        int codigo = 200;
        std::string codificacion;
        bool codificar = false;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_peticiones.append(QString::fromLatin1(req.target.data(), int(req.target.size())));
            m_cabeceras[endpoint] = {req.headers.begin(), req.headers.end()};
            auto c = m_codificaciones.find(endpoint);
            if (c != m_codificaciones.end()) {
                codificar = true;
                codificacion = c->second;
            }
            auto r = m_respuestas.find(endpoint);
            if (r != m_respuestas.end())
                cuerpo = r->second;
            auto g = m_generadores.find(endpoint);
            if (g != m_generadores.end())
                generador = g->second;
            auto d = m_demoras.find(endpoint);
            if (d != m_demoras.end())
                demora = d->second;
            auto e = m_estados.find(endpoint);
            if (e != m_estados.end())
                codigo = e->second;
        }
        if (demora > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(demora));
        if (generador) {
            const QByteArray generado =
                generador(QString::fromLatin1(req.target.data(), int(req.target.size())));
            cuerpo.assign(generado.constData(), std::size_t(generado.size()));
        }
        res.status = codigo;
        if (codificar) {
            // A type the library does not compress: the body goes out as given.
            res.set_header("Content-Encoding", codificacion);
            res.set_content(cuerpo, "application/octet-stream");
        } else {
            res.set_content(cuerpo, "text/plain; charset=ISO-8859-1");
        }
    });
    m_puerto = m_servidor->bind_to_any_port("127.0.0.1");
    m_hilo = std::thread([this] { m_servidor->listen_after_bind(); });
    // stop() before the loop runs would be lost; wait until it accepts.
    for (int i = 0; i < 500 && !m_servidor->is_running(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

ServidorPrueba::~ServidorPrueba()
{
    m_servidor->stop();
    if (m_hilo.joinable())
        m_hilo.join();
}

QString ServidorPrueba::direccion() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_puerto);
}

QString ServidorPrueba::urlBase() const
{
    return QStringLiteral("http://") + direccion() + QStringLiteral("/Tornavo/TornavoSU/");
}

void ServidorPrueba::responder(const QString &endpoint, const QByteArray &cuerpo)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_respuestas[endpoint.toStdString()] =
        std::string(cuerpo.constData(), std::size_t(cuerpo.size()));
    m_generadores.erase(endpoint.toStdString());
}

void ServidorPrueba::responderCon(const QString &endpoint, Generador generador)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_generadores[endpoint.toStdString()] = std::move(generador);
}

void ServidorPrueba::estado(const QString &endpoint, int codigo)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_estados[endpoint.toStdString()] = codigo;
}

void ServidorPrueba::codificacion(const QString &endpoint, const QByteArray &contentEncoding)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (contentEncoding.isEmpty())
        m_codificaciones.erase(endpoint.toStdString());
    else
        m_codificaciones[endpoint.toStdString()] = contentEncoding.toStdString();
}

QByteArray ServidorPrueba::cabeceraPedida(const QString &endpoint, const QByteArray &nombre) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto e = m_cabeceras.find(endpoint.toStdString());
    if (e == m_cabeceras.end())
        return QByteArray();
    for (const auto &c : e->second)
        if (QByteArray::fromStdString(c.first).compare(nombre, Qt::CaseInsensitive) == 0)
            return QByteArray::fromStdString(c.second);
    return QByteArray();
}

void ServidorPrueba::demorar(const QString &endpoint, int milisegundos)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_demoras[endpoint.toStdString()] = milisegundos;
}

QStringList ServidorPrueba::peticiones() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_peticiones;
}

QStringList ServidorPrueba::peticionesA(const QString &endpoint) const
{
    QStringList filtradas;
    for (const QString &p : peticiones()) {
        const QString ruta = p.section(QLatin1Char('?'), 0, 0);
        if (ruta.section(QLatin1Char('/'), -1) == endpoint)
            filtradas.append(p);
    }
    return filtradas;
}

void ServidorPrueba::limpiarPeticiones()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_peticiones.clear();
}

QString ServidorPrueba::direccionSinServidor()
{
    int puerto = 0;
    {
        ServidorPrueba srv;
        puerto = srv.puerto();
    }
    return QStringLiteral("127.0.0.1:%1").arg(puerto);
}
