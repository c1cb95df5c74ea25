#include "SetCommand.h"

#include "CliContext.h"
#include "SettingKeys.h"

QString SetCommand::summary() const
{
    return QStringLiteral("change a setting and save it");
}

QString SetCommand::help() const
{
    QString text =
        QStringLiteral("Usage: brevano set KEY VALUE\n\n"
                       "Sets KEY to VALUE and saves the data file. A value of the wrong type\n"
                       "changes nothing. ShadowDesktopPath takes an existing folder outside the\n"
                       "Desktop, or \"\" for the default.\n\nKeys:\n");
    for (const SettingKeys::Key &key : SettingKeys::all()) {
        if (key.set)
            text +=
                QStringLiteral("  %1 %2\n").arg(key.name, -28).arg(SettingKeys::typeName(key.type));
    }
    return text;
}

int SetCommand::run(CliContext &context, const QStringList &args)
{
    if (args.size() != 2)
        return context.fail(QStringLiteral("set takes a KEY and a VALUE (see brevano set --help)"),
                            CliContext::BadUsage);
    const SettingKeys::Key *key = SettingKeys::find(args.at(0));
    if (!key)
        return context.fail(QStringLiteral("unknown key \"%1\" (brevano set --help lists the keys)")
                                .arg(args.at(0)),
                            CliContext::BadUsage);
    if (!key->set)
        return context.fail(QStringLiteral("%1 is not set from the command line").arg(key->name),
                            CliContext::BadUsage);
    QString expected;
    const auto value = SettingKeys::parse(*key, args.at(1), expected);
    if (!value)
        return context.fail(
            QStringLiteral("%1 expects %2, not \"%3\"").arg(key->name, expected, args.at(1)),
            CliContext::BadUsage);
    context.loadStore();
    key->set(context.data(), context.engine(), *value);
    return context.saveStore() ? CliContext::Success : CliContext::Failed;
}
