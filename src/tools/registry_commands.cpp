#include "tools/registry_commands.h"

#include "platform/registry.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace cvd::tools {

namespace {

constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

struct RegistryArguments
{
    platform::Hive hive = platform::Hive::LocalMachine;
    bool number = false;
    QStringList positional;
};

std::optional<RegistryArguments> parse_arguments(const QStringList& arguments, QTextStream& err)
{
    RegistryArguments parsed;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (argument == u"--hive") {
            const std::optional<platform::Hive> hive =
                i + 1 < arguments.size() ? platform::parse_hive(arguments.at(i + 1)) : std::nullopt;
            if (!hive) {
                err << "cvdctl reg: --hive takes HKLM or HKCU\n";
                return std::nullopt;
            }
            parsed.hive = *hive;
            ++i;
        } else if (argument == u"--number") {
            parsed.number = true;
        } else {
            parsed.positional.append(argument);
        }
    }
    return parsed;
}

int get_value(platform::Registry& registry, const RegistryArguments& args, QTextStream& out, QTextStream& err)
{
    const std::optional<QString> value = registry.read_text(args.hive, args.positional.at(0), args.positional.at(1));
    if (!value) {
        err << "cvdctl reg get: no value " << args.positional.at(1) << " in " << args.positional.at(0) << '\n';
        return kFailed;
    }
    out << *value << '\n';
    return kOk;
}

int set_value(platform::Registry& registry, const RegistryArguments& args, QTextStream& err)
{
    const QString& key = args.positional.at(0);
    const QString& name = args.positional.at(1);
    const QString& data = args.positional.at(2);
    if (!registry.create_key(args.hive, key)) {
        err << "cvdctl reg set: cannot create key " << key << '\n';
        return kFailed;
    }
    bool written = false;
    if (args.number) {
        bool ok = false;
        const qint64 number = data.trimmed().toLongLong(&ok);
        if (!ok) {
            err << "cvdctl reg set: not a number: " << data << '\n';
            return kUsage;
        }
        written = registry.write_number(args.hive, key, name, number);
    } else {
        written = registry.write_text(args.hive, key, name, data);
    }
    if (!written) {
        err << "cvdctl reg set: cannot write " << name << " in " << key << '\n';
        return kFailed;
    }
    return kOk;
}

int delete_entry(platform::Registry& registry, const RegistryArguments& args, QTextStream& err)
{
    const QString& key = args.positional.at(0);
    if (!registry.key_exists(args.hive, key)) {
        err << "cvdctl reg delete: no key " << key << '\n';
        return kFailed;
    }
    if (args.positional.size() == 1) {
        return registry.delete_key(args.hive, key) ? kOk : kFailed;
    }
    const QString& name = args.positional.at(1);
    if (!registry.read_text(args.hive, key, name) || !registry.delete_value(args.hive, key, name)) {
        err << "cvdctl reg delete: no value " << name << " in " << key << '\n';
        return kFailed;
    }
    return kOk;
}

int list_key(platform::Registry& registry, const RegistryArguments& args, QTextStream& out, QTextStream& err)
{
    const QString& key = args.positional.at(0);
    if (!registry.key_exists(args.hive, key)) {
        err << "cvdctl reg list: no key " << key << '\n';
        return kFailed;
    }
    for (const QString& subkey : registry.subkeys(args.hive, key)) {
        out << subkey << "\\\n";
    }
    for (const auto& [name, data] : registry.values(args.hive, key)) {
        out << name << " = " << data << '\n';
    }
    return kOk;
}

} // namespace

int run_registry_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    if (arguments.isEmpty()) {
        err << "cvdctl reg: missing command (get, set, delete, list)\n";
        return kUsage;
    }
    const QString& command = arguments.first();
    const std::optional<RegistryArguments> args = parse_arguments(arguments.mid(1), err);
    if (!args) {
        return kUsage;
    }
    const qsizetype count = args->positional.size();
    const bool fits = (command == u"get" && count == 2) || (command == u"set" && count == 3) ||
                      (command == u"delete" && (count == 1 || count == 2)) || (command == u"list" && count == 1);
    if (!fits) {
        err << "cvdctl reg: wrong arguments for '" << command << "'; see cvdctl --help\n";
        return kUsage;
    }
    platform::Registry registry(platform::Registry::default_root());
    if (command == u"get") {
        return get_value(registry, *args, out, err);
    }
    if (command == u"set") {
        return set_value(registry, *args, err);
    }
    if (command == u"delete") {
        return delete_entry(registry, *args, err);
    }
    return list_key(registry, *args, out, err);
}

} // namespace cvd::tools
