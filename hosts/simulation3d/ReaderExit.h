#pragma once

/// How planviewer-model ends.
namespace ReaderExit {

enum : int
{
    Done = 0,
    Usage = 2,
    NotAModel = 3,
    NoGeometry = 4,
    NoGraphics = 5,
    NotWritten = 6,
};

} // namespace ReaderExit
