#pragma once

#include <QJsonObject>
#include <QObject>

class QLocalSocket;

// One connection to the helper: sends framed requests and hands each reply and progress message to whoever
// waits for that request id. Main thread only.
class HelperConnection : public QObject {
    Q_OBJECT

public:
    explicit HelperConnection(QObject* parent);

    // Connects; a helper that isn't there is reported through `lost` before this returns.
    void open(const QString& socketPath);
    // False once the connection has been lost; a lost connection is never reused.
    bool isOpen() const { return m_open; }
    const QString& lossDescription() const { return m_lossDescription; }
    void send(qint64 id, const QString& op, const QJsonObject& arguments);

Q_SIGNALS:
    void replied(qint64 id, const QJsonObject& reply);
    void progressed(qint64 id, const QJsonObject& progress);
    // The helper went away or sent something unreadable; every call waiting here ends.
    void lost(const QString& description);

private:
    void readMessages();
    void loseConnection(const QString& description);

    QLocalSocket* m_socket;
    QByteArray m_buffer;
    bool m_open = true;
    QString m_lossDescription;
};
