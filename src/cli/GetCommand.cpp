#include "GetCommand.h"

#include "CliContext.h"
#include "SettingKeys.h"

QString GetCommand::summary() const
{
    return QStringLiteral("print a setting");
}

QString GetCommand::help() const
{
    QString text = QStringLiteral(
        "Usage: brevano get KEY\n\n"
        "Prints the value of KEY, or its default when it is not set: booleans as true\n"
        "or false, integers in decimal, dates in ISO 8601 UTC, lists and dictionaries\n"
        "as a property list.\n\nKeys:\n");
    for (const SettingKeys::Key &key : SettingKeys::all())
        text += QStringLiteral("  %1 %2\n").arg(key.name, -28).arg(SettingKeys::typeName(key.type));
    return text;
}

int GetCommand::run(CliContext &context, const QStringList &args)
{
    if (args.size() != 1)
        return context.fail(QStringLiteral("get takes one KEY (see brevano get --help)"),
                            CliContext::BadUsage);
    const SettingKeys::Key *key = SettingKeys::find(args.first());
    if (!key)
        return context.fail(QStringLiteral("unknown key \"%1\" (brevano get --help lists the keys)")
                                .arg(args.first()),
                            CliContext::BadUsage);
    context.loadStore();
    context.out() << SettingKeys::format(*key, key->get(context.data(), context.engine())) << '\n';
    return CliContext::Success;
}
