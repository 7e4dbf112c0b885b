// The core link's frame reader on hostile bytes: the communicator's own
// onReadyRead with its header test, fed from memory instead of a socket. A
// misaddressed or corrupt frame ends as a reconnect, which here drops what is
// left of the input, as a new connection would.
#include <QCoreApplication>
#include <QLoggingCategory>

#include <cstdint>

#include "core/CTavoCoreCommunicator.h"
#include "core/TavoGlobals.h"

namespace {
class MemoryCom : public CTavoCoreCommunicator
{
public:
    MemoryCom() : CTavoCoreCommunicator(QStringLiteral("127.0.0.1"), 1, QStringLiteral("zedagui"), false)
    {
        setOpenMode(QIODevice::ReadWrite);
    }
    void feed(const QByteArray& bytes)
    {
        m_input = bytes;
        m_at = 0;
        onReadyRead();
        m_input.clear();
        m_at = 0;
        readAll();  // what the device read ahead
        resetFrameState();
    }
    qint64 bytesAvailable() const override { return QIODevice::bytesAvailable() + (m_input.size() - m_at); }

protected:
    qint64 readData(char* data, qint64 max) override
    {
        const qint64 n = qMin<qint64>(max, m_input.size() - m_at);
        if (n <= 0)
            return 0;
        memcpy(data, m_input.constData() + m_at, size_t(n));
        m_at += int(n);
        return n;
    }
    void reconnect() override
    {
        // A reconnect leaves the stream: what follows belongs to the old connection.
        m_at = m_input.size();
        resetFrameState();
    }

private:
    QByteArray m_input;
    int m_at = 0;
};

MemoryCom* com()
{
    static int argc = 1;
    static char name[] = "fuzz_frames";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = new QCoreApplication(argc, argv);
    (void)app;
    QLoggingCategory::setFilterRules(QStringLiteral("tgui.debug=false"));
    static MemoryCom* instance = new MemoryCom;
    return instance;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    MemoryCom* c = com();
    bRebootInitiated = false;
    c->feed(QByteArray(reinterpret_cast<const char*>(data), int(size)));
    // Deep streams continue from the event loop.
    QCoreApplication::processEvents();
    c->feed(QByteArray());
    return 0;
}
