#pragma once
#include "tgui_export.h"
// Icons by tavoIcon number or by name, from a directory chosen by the device's
// base profile and the skin's icon family. Files are decoded on first use and kept;
// a missing file answers with the shared placeholder. A skin may carry a style text
// for the repository, hence the sheet base.
#include <QMap>
#include <QString>

#include "style/CIconResource.h"
#include "style/CTavoStyleSheet.h"

class QPixmap;

enum { TAVO_ICON_COUNT = 522 };

class TGUI_EXPORT CTavoIconRepository : public CTavoStyleSheet
{
public:
    static const char* const ICON_RESOURCE_DIRECTORY;
    static const char* const ICON_RESOURCE_DIRECTORY_ZENITH;
    static const char* const ICON_RESOURCE_DIRECTORY_SFB;
    static const char* const ICON_RESOURCE_DIRECTORY_BSFT;
    static const char* const ICON_RESOURCE_DIRECTORY_OS;
    static const char* const ONEBIT_ICON_RESOURE_DIRECTORY;
    static const char* const GREYSCALE_ICON_RESOURCE_DIRECTORY;
    static const char* const GREYSCALE_ICON_RESOURCE_DIRECTORY_SFB;
    static const char* const GREYSCALE_ICON_RESOURCE_DIRECTORY_BSFT;
    // Where the device states its base profile: an integer on the first line.
    static const char* s_baseProfileFile;

    CTavoIconRepository(QString name, QString* names, int count, bool greyscale, bool oneBit);
    ~CTavoIconRepository();

    // Created on first use with the directory in force at that moment.
    CIconResource& operator[](const QString& name);
    // Through the name table; out of range gives the empty "_NotApplicable" resource.
    CIconResource& operator[](int number);
    QString getFileName(int number) const;
    // The name of a table row, or empty out of range.
    QString iconName(int number) const;
    void clear();

    void setIconPath(const QString& path);
    void setCustomIconsPath(int profile);
    void useOneBitIcons();
    void useGreyscaleIcons();
    void useZenithIcons();

    const QString& name() const { return m_name; }
    const QString& iconPath() const { return m_iconPath; }
    int count() const { return m_count; }
    bool zenithIconsUsed() const { return m_zenithIcons; }
    const QMap<QString, CIconResource>& resources() const { return m_resources; }

    // The base profile, or -1 when the file is absent, empty or holds no number.
    static int readBaseProfile();

private:
    void determineIconPath(bool greyscale, bool oneBit);

    QMap<QString, CIconResource> m_resources;
    QString m_name;
    QString m_iconPath;
    QString* m_names;
    int m_count;
    bool m_zenithIcons;
};

extern TGUI_EXPORT QString tavoIconNames[TAVO_ICON_COUNT];
extern TGUI_EXPORT CTavoIconRepository iconRepository;

// Drops the loaded icons and loads a style text into the global repository.
TGUI_EXPORT void updateIconResource(char* style, char* attributes);
// The raster of an icon number; null below 1 or beyond the table.
TGUI_EXPORT QPixmap* getIconPixmap(int number);
