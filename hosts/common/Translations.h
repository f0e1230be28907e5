#pragma once

class QString;

/// The folder of the programs that people start, from which the installed catalogues are found; of a program
/// that is installed elsewhere. To be called before the others here.
void setProgramsFolder(const QString& folder);

/// Has the library's labels translated into the user's language, as the locale tells it: the first of the
/// user's languages that there is a catalogue for. Chinese needs none; whoever reads neither that nor any of
/// the others gets English. Catalogues are looked for in the folder "translations" beside the program, then
/// where they are installed.
///
/// To be called after the application object is made and before the library is asked for a label: some keep
/// the language in which they were asked for first.
void installTranslations();

/// The same for a host's own texts, which are English in its sources: those of "planviewer" come from
/// planviewer_zh.qm and the like. Qt's own texts, as on the buttons of its dialogs, come along where Qt's
/// catalogues are installed.
void installProgramTranslations(const QString& catalogue);
