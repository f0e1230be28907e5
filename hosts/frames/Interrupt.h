#pragma once

#include <QtCore/QObject>
#include <QtCore/QTimer>

/// Tells once, from the event loop, that the user pressed Ctrl+C or the program was asked to end. A second
/// time ends it at once.
class Interrupt : public QObject
{
    Q_OBJECT

public:
    explicit Interrupt(QObject* parent = nullptr);

    /// Whether that has happened, told or not yet.
    static bool hasCome();

Q_SIGNALS:
    void wanted();

private:
    QTimer m_look;
};
