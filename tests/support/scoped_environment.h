#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <cstdlib>
#include <optional>
#include <utility>

namespace cvd::testing {

// Sets and unsets environment variables for one test and puts the old values back at the end.
class ScopedEnvironment
{
public:
    ScopedEnvironment() = default;
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

    ~ScopedEnvironment()
    {
        for (auto it = m_saved.crbegin(); it != m_saved.crend(); ++it) {
            if (it->second) {
                ::setenv(it->first.constData(), it->second->constData(), 1);
            } else {
                ::unsetenv(it->first.constData());
            }
        }
    }

    void set(const char* name, const QString& value)
    {
        save(name);
        ::setenv(name, value.toUtf8().constData(), 1);
    }

    void unset(const char* name)
    {
        save(name);
        ::unsetenv(name);
    }

private:
    void save(const char* name)
    {
        const char* old = std::getenv(name);
        m_saved.append({QByteArray(name), old ? std::optional<QByteArray>(QByteArray(old)) : std::nullopt});
    }

    QList<std::pair<QByteArray, std::optional<QByteArray>>> m_saved;
};

} // namespace cvd::testing
