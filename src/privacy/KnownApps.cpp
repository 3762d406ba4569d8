#include "privacy/KnownApps.h"

#include <QFileInfo>

const QList<KnownApp>& knownBrowsers()
{
    static const QList<KnownApp> browsers{
        {QStringLiteral("Chrome"),
            {QStringLiteral(".config/google-chrome"),
                QStringLiteral(".var/app/com.google.Chrome/config/google-chrome")}},
        {QStringLiteral("Edge"),
            {QStringLiteral(".config/microsoft-edge"),
                QStringLiteral(".var/app/com.microsoft.Edge/config/microsoft-edge")}},
        {QStringLiteral("Brave"),
            {QStringLiteral(".config/BraveSoftware/Brave-Browser"),
                QStringLiteral(".var/app/com.brave.Browser/config/BraveSoftware/Brave-Browser")}},
        {QStringLiteral("Vivaldi"),
            {QStringLiteral(".config/vivaldi"), QStringLiteral(".var/app/com.vivaldi.Vivaldi/config/vivaldi")}},
        {QStringLiteral("Opera"),
            {QStringLiteral(".config/opera"), QStringLiteral(".var/app/com.opera.Opera/config/opera")}},
        {QStringLiteral("Arc"), {}},
        {QStringLiteral("Firefox"),
            {QStringLiteral(".mozilla/firefox"), QStringLiteral(".var/app/org.mozilla.firefox/.mozilla/firefox")}},
        {QStringLiteral("Safari"), {}},
    };
    return browsers;
}

const QList<KnownApp>& knownChatApps()
{
    static const QList<KnownApp> chats{
        {QStringLiteral("Slack"),
            {QStringLiteral(".config/Slack"), QStringLiteral(".var/app/com.slack.Slack/config/Slack")}},
        {QStringLiteral("Discord"),
            {QStringLiteral(".config/discord"), QStringLiteral(".var/app/com.discordapp.Discord/config/discord")}},
        {QStringLiteral("Telegram"),
            {QStringLiteral(".local/share/TelegramDesktop"),
                QStringLiteral(".var/app/org.telegram.desktop/data/TelegramDesktop")}},
        {QStringLiteral("Signal"),
            {QStringLiteral(".config/Signal"), QStringLiteral(".var/app/org.signal.Signal/config/Signal")}},
        {QStringLiteral("Microsoft Teams"),
            {QStringLiteral(".config/Microsoft/Microsoft Teams"), QStringLiteral(".config/teams-for-linux")}},
        {QStringLiteral("WhatsApp"),
            {QStringLiteral(".local/share/whatsapp-for-linux"), QStringLiteral(".config/whatsapp-desktop-linux")}},
    };
    return chats;
}

int countPresent(const QList<KnownApp>& apps, const QString& home)
{
    int present = 0;
    for (const KnownApp& app : apps) {
        for (const QString& folder : app.dataFolders) {
            if (QFileInfo(home + QLatin1Char('/') + folder).isDir()) {
                ++present;
                break;
            }
        }
    }
    return present;
}
