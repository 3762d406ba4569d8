#include "cli/Commands.h"
#include "cli/TextTable.h"

#include "common/ByteCount.h"
#include "common/JsonText.h"
#include "platform/Terminal.h"
#include "usage/FastWalk.h"
#include "usage/UsageItem.h"
#include "usage/UsageTexts.h"
#include "usage/WalkRoot.h"

#include <QDir>
#include <QLocale>

namespace {

struct UsageOptions {
    QString path = QDir::currentPath();
    int depth = 1;
    bool json = false;
    int largest = 0; // with N: the N largest files of the tree instead of the folders
};

std::optional<UsageOptions> parseOptions(CommandContext& context)
{
    UsageOptions options;
    options.json = takeFlag(context.arguments, QStringLiteral("--json"));
    if (const std::optional<QString> depth = takeValue(context.arguments, QStringLiteral("--depth"))) {
        bool ok = false;
        options.depth = depth->toInt(&ok);
        if (!ok || options.depth < 1) {
            context.err << "velloru usage: --depth needs a whole number of at least 1.\n";
            return std::nullopt;
        }
    }
    if (const std::optional<QString> largest = takeValue(context.arguments, QStringLiteral("--largest"))) {
        bool ok = false;
        options.largest = largest->toInt(&ok);
        if (!ok || options.largest < 1 || options.largest > int(LargestFiles::defaultCapacity)) {
            context.err << QStringLiteral("velloru usage: --largest needs a whole number from 1 to %1.\n")
                               .arg(LargestFiles::defaultCapacity);
            return std::nullopt;
        }
    }
    const Operands left = operands(context.arguments);
    if (left.unknownOption) {
        context.err << QStringLiteral("velloru usage: unknown option “%1” — the options are --depth N, --largest N "
                                      "and --json.\n")
                           .arg(*left.unknownOption);
        return std::nullopt;
    }
    if (left.names.size() > 1) {
        context.err << "velloru usage: name one folder — usage measures one folder at a time.\n";
        return std::nullopt;
    }
    if (!left.names.isEmpty())
        options.path = left.names.first();
    return options;
}

// The table lists the biggest items of each folder; the small rest is summed up in one row so that a
// deep listing stays readable. JSON lists everything.
constexpr qsizetype rowsPerFolder = 25;

QString shareText(qint64 bytes, qint64 total)
{
    return QStringLiteral("%1%").arg(100.0 * shareOf(bytes, total), 0, 'f', 1);
}

void addRows(TextTable& table, const QList<UsageItem>& items, qint64 total, int depth, int level)
{
    const QString indent(2 * level, QLatin1Char(' '));
    for (qsizetype i = 0; i < std::min(items.size(), rowsPerFolder); ++i) {
        const UsageItem& item = items[i];
        const QString name = item.kind == UsageItem::Kind::files ? item.name : item.path;
        table.addRow(
            {formatBytes(item.bytes), shareText(item.bytes, total), QString::number(item.fileCount), indent + name});
        if (level + 1 < depth && item.canOpen())
            addRows(table, itemsOf(*item.node), total, depth, level + 1);
    }
    if (items.size() <= rowsPerFolder)
        return;
    qint64 bytes = 0;
    qint64 files = 0;
    for (qsizetype i = rowsPerFolder; i < items.size(); ++i) {
        bytes += items[i].bytes;
        files += items[i].fileCount;
    }
    table.addRow({formatBytes(bytes), shareText(bytes, total), QString::number(files),
        indent + QStringLiteral("… %1 smaller items").arg(items.size() - rowsPerFolder)});
}

QByteArray itemsJson(const QList<UsageItem>& items, qint64 total, int depth, int level)
{
    QList<QByteArray> elements;
    for (const UsageItem& item : items) {
        JsonObjectWriter object;
        object
            .add(u"kind",
                QString::fromLatin1(item.kind == UsageItem::Kind::files ? "files"
                        : item.kind == UsageItem::Kind::package         ? "package"
                                                                        : "folder"))
            .add(u"name", item.name)
            .add(u"path", item.path)
            .add(u"bytes", item.bytes)
            .add(u"share", shareOf(item.bytes, total))
            .add(u"fileCount", item.fileCount)
            .add(u"exactPath", item.exactPath);
        if (level + 1 < depth && item.canOpen())
            object.addRaw(u"items", itemsJson(itemsOf(*item.node), total, depth, level + 1).trimmed());
        elements.append(object.finish());
    }
    return jsonArray(elements);
}

QByteArray largestJson(const std::vector<SizedFile>& files, int count)
{
    QList<QByteArray> elements;
    for (std::size_t i = 0; i < std::min(files.size(), std::size_t(count)); ++i)
        elements.append(JsonObjectWriter()
                            .add(u"path", fromFileName(files[i].path))
                            .add(u"bytes", qint64(files[i].bytes))
                            .add(u"exactPath", isExactFileName(files[i].path))
                            .finish());
    return elements.isEmpty() ? QByteArray("[]") : jsonArray(elements).trimmed();
}

void showCounters(FastWalk& walk, QTextStream& err)
{
    const WalkCounters counters = walk.counters();
    const QLocale locale;
    err << QStringLiteral("\rMeasuring… %1 folders, %2 files, %3\x1b[K")
               .arg(locale.toString(counters.foldersListed), locale.toString(counters.filesCounted),
                   formatBytes(counters.bytesCounted));
    err.flush();
}

} // namespace

int runUsageCommand(CommandContext& context)
{
    const std::optional<UsageOptions> options = parseOptions(context);
    if (!options)
        return 2;
    const ResolvedRoot resolved = resolveWalkRoot(options->path);
    const std::optional<QString>& root = resolved.path;
    if (!root) {
        context.err << resolved.failure << '\n';
        return 1;
    }

    FastWalk walk(toFileName(*root), {});
    const bool showProgress = standardErrorIsTerminal();
    std::optional<Progress> last;
    for (;;) {
        while (showProgress && !walk.waitFor(std::chrono::milliseconds(100)))
            showCounters(walk, context.err);
        std::optional<Progress> value = walk.next();
        if (!value)
            break;
        last = std::move(value);
    }
    if (showProgress) {
        context.err << "\r\x1b[K";
        context.err.flush();
    }
    if (!last || !last->finished) {
        context.err << UsageTexts::cannotExamine(*root) << '\n';
        return 1;
    }

    const qint64 total = checkedAdd(last->measuredTotal, last->rootFileBytes);
    const QList<UsageItem> items = itemsOf(*last, *root);
    const std::vector<std::string>& unreadable = last->unreadableFolders;
    if (options->largest > 0 && options->json) {
        context.out << QString::fromUtf8(JsonObjectWriter()
                                             .add(u"path", *root)
                                             .add(u"total", total)
                                             .addRaw(u"largestFiles", largestJson(last->largestFiles, options->largest))
                                             .finish())
                    << '\n';
        return 0;
    }
    if (options->largest > 0) {
        TextTable table({QStringLiteral("Size"), QStringLiteral("File")}, {true, false});
        for (std::size_t i = 0; i < std::min(last->largestFiles.size(), std::size_t(options->largest)); ++i)
            table.addRow({formatBytes(last->largestFiles[i].bytes), fromFileName(last->largestFiles[i].path)});
        table.print(context.out);
        context.out
            << QStringLiteral("\nTotal %1 in %2 · %3\n").arg(formatBytes(total), *root, UsageTexts::allocatedNote);
        return 0;
    }
    if (options->json) {
        QList<QByteArray> unreadableJson;
        for (const std::string& folder : unreadable)
            unreadableJson.append(jsonString(fromFileName(folder)));
        const QByteArray json = JsonObjectWriter()
                                    .add(u"path", *root)
                                    .add(u"total", total)
                                    .add(u"rootFileBytes", qint64(last->rootFileBytes))
                                    .add(u"rootFileCount", qint64(last->rootFileCount))
                                    .addRaw(u"items", itemsJson(items, total, options->depth, 0).trimmed())
                                    .addRaw(u"unreadableFolders",
                                        unreadable.empty() ? QByteArray("[]") : jsonArray(unreadableJson).trimmed())
                                    .finish();
        context.out << QString::fromUtf8(json) << '\n';
        return 0;
    }
    TextTable table(
        {QStringLiteral("Size"), QStringLiteral("Share"), QStringLiteral("Files"), QStringLiteral("Folder")},
        {true, true, true, false});
    addRows(table, items, total, options->depth, 0);
    table.print(context.out);
    context.out << QStringLiteral("\nTotal %1 in %2 · %3\n").arg(formatBytes(total), *root, UsageTexts::allocatedNote);
    if (!unreadable.empty())
        context.out << UsageTexts::unreadableFolders(qsizetype(unreadable.size()), fromFileName(unreadable.front()))
                    << '\n';
    return 0;
}
