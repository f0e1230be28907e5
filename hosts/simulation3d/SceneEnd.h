#pragma once

#include <QtCore/QObject>

/// Whether a scene of Qt 3D can be ended. Make it right before the scene's engine.
///
/// Qt 3D asks one of its objects, in the thread of the application, for a surface on which its drawing thread
/// can clean up in the end. When the application is held up while that thread starts, it asks before it has
/// the object, and nothing comes of it; to end the engine then ends the program. All that can be seen of it
/// from outside is whether such an object is asked: each by one scene, the youngest that waits.
class SceneEnd : public QObject
{
public:
    SceneEnd();

    /// Handles calls that wait in the event queue, when nothing was asked so far. If it is false, leave the
    /// engine as it is, for as long as the program runs.
    bool isPossible();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool m_isAsked = false;
};
