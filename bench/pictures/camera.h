#pragma once

#include <QDir>
#include <QString>
#include <QStringList>
#include <QWidget>

/// Takes pictures of what the screen shows, and looks at each whether everything in the windows has its place.
class Camera {
public:
    explicit Camera(const QDir& directory) : Directory(directory) {}

    /// The inside of a window, with whatever lies over it.
    void Take(const QString& name, const QWidget& window);
    /// What was found at all pictures so far, each once.
    const QStringList& Faults() const { return Found; }

private:
    const QDir Directory;
    QStringList Found;
};
