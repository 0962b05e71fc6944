#pragma once

#include <QByteArray>

#include <ctime>
#include <optional>

namespace kestrant {

/// Sets TZ for this process as long as it lives; absent takes it away. What the C library makes of it is
/// there to compare with.
class ProcessZone {
  public:
    explicit ProcessZone(const std::optional<QByteArray>& zone)
        : hadZone_(qEnvironmentVariableIsSet("TZ"))
        , before_(qgetenv("TZ")) {
        set(zone);
    }
    ~ProcessZone() { set(hadZone_ ? std::optional(before_) : std::nullopt); }
    ProcessZone(const ProcessZone&) = delete;
    ProcessZone& operator=(const ProcessZone&) = delete;

    /// Seconds east of UTC.
    [[nodiscard]] static long offsetAt(std::time_t time) {
        std::tm local{};
        localtime_r(&time, &local);
        return local.tm_gmtoff;
    }

  private:
    static void set(const std::optional<QByteArray>& zone) {
        if (zone)
            qputenv("TZ", *zone);
        else
            qunsetenv("TZ");
        tzset();
    }

    bool hadZone_;
    QByteArray before_;
};

}  // namespace kestrant
