#include "workspace/DesktopWorkspace.h"

#include "platform/loop/DispatchQueue.h"
#include "platform/text/Texts.h"
#include "platform/window/BundleImage.h"
#include "workspace/ImageWarningFilter.h"

#include <QPixmap>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <set>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto burstLength = 200ms;
constexpr auto becomingTime = 2s; // in which a program has become what it is
constexpr auto leastInterval = 500ms;
constexpr qsizetype mostIdentified = 1024;
constexpr int trialSize = 32;

RunningApplication runningApplication(const ApplicationIdentity& identity) {
    return {static_cast<std::uint32_t>(identity.mainProcess), QString::fromStdString(identity.name),
            QString::fromStdString(identity.entryPath),
            QString::fromStdString(identity.executable)};
}

} // namespace

DesktopWorkspace::DesktopWorkspace(platform::RunLoop& loop, std::shared_ptr<ApplicationScan> scan,
                                   const QDBusConnection& bus)
    : loop_(loop)
    , scan_(std::move(scan))
    , queue_(platform::DispatchQueue::makeSerial("com.quarnel.applications"))
    , soon_(loop, [this] { look(); })
    , later_(loop, [this] { look(); })
    , asking_(loop, [this] { identifyAsked(); })
    , units_([this] { hear(); }, bus)
    , windows_([this] { hear(); })
    , self_(std::make_shared<DesktopWorkspace*>(this)) {
    scan_->watchEntries(queue_, [self = self_] {
        platform::DispatchQueue::main()->async([self] {
            if (*self != nullptr)
                (*self)->hearOfEntries();
        });
    });
    look();
}

DesktopWorkspace::~DesktopWorkspace() {
    *self_ = nullptr;
}

/// After a change that the desktop has reported.
void DesktopWorkspace::hear() {
    if (!soon_.isActive())
        soon_.startAt(std::max(platform::MonotonicClock::now() + burstLength, nextLook_));
    later_.start(becomingTime);
}

void DesktopWorkspace::hearOfEntries() {
    haveEntriesNews_ = true;
    hear();
}

void DesktopWorkspace::lookAgain() {
    if (!soon_.isActive())
        soon_.startAt(std::max(platform::MonotonicClock::now(), nextLook_));
}

void DesktopWorkspace::look() {
    nextLook_ = platform::MonotonicClock::now() + leastInterval;
    hasNews_ = isLooking_;
    if (std::exchange(isLooking_, true))
        return;
    isReadingNews_ = std::exchange(haveEntriesNews_, false);
    inBackground(
        [windows = windows_.owners()](ApplicationScan& scan) { return scan.running(windows); },
        &DesktopWorkspace::take);
}

void DesktopWorkspace::take(const Identities& running) {
    isLooking_ = false;
    const bool isAnyOutdated = outdate();
    if (hasNews_)
        look();
    QList<RunningApplication> applications;
    ByName known;
    for (const ApplicationIdentity& each : running) {
        applications.append(runningApplication(each));
        known.insert(applications.last().localizedName, each);
    }
    const bool isDifferent = isAnyOutdated || running_ != applications || known_ != known;
    running_ = std::move(applications);
    known_ = std::move(known);
    watchEnds();
    if (isDifferent)
        tellRunningApplications();
}

/// After a scan that has read changed entries: marks known programs as outdated. Returns whether
/// there are any.
bool DesktopWorkspace::outdate() {
    if (!std::exchange(isReadingNews_, false))
        return false;
    for (Identified& each : identified_)
        each.isOutdated = true;
    return !identified_.isEmpty();
}

/// Systemd and the window manager do not report what the user starts in a terminal.
void DesktopWorkspace::watchEnds() {
    std::set<pid_t> wanted;
    for (const ApplicationIdentity& each : std::as_const(known_))
        wanted.insert(each.mainProcess);
    std::erase_if(ends_, [&](const auto& each) { return !wanted.contains(each.first); });
    for (const pid_t process : wanted) {
        if (ends_.contains(process))
            continue;
        auto watch = platform::ProcessWatch::create(loop_, process, [this] { hear(); });
        if (watch == nullptr && errno == ESRCH)
            hear();
        ends_.emplace(process, std::move(watch));
    }
}

/// What is known of the name. Another process of that name may be another program, and other
/// entries may say something else, so it is asked about as well; meanwhile the answer is the last
/// one.
const ApplicationIdentity* DesktopWorkspace::findOrAsk(const ProgramReference& program) const {
    if (const auto found = known_.constFind(program.name); found != known_.cend())
        return &*found;
    const auto found = identified_.constFind(program.name);
    const bool isThere = found != identified_.cend();
    if (!isThere || found->isOutdated || (program.pid != 0 && found->pid != program.pid))
        askAbout(program);
    return isThere ? &found->identity : nullptr;
}

QIcon DesktopWorkspace::iconForProgram(const ProgramReference& program) const {
    const ApplicationIdentity* const identity = findOrAsk(program);
    const ApplicationIdentity& known = identity != nullptr ? *identity : ApplicationIdentity();
    return icons_.icon(QString::fromStdString(known.icon),
                       program.path.isEmpty() ? QString::fromStdString(known.executable)
                                              : program.path,
                       program.name);
}

/// A desktop entry makes a program an application.
QIcon DesktopWorkspace::iconForApplication(const QString& name) const {
    const ApplicationIdentity* const identity = findOrAsk({0, name, {}});
    if (identity == nullptr || identity->entryPath.empty())
        return genericApplicationIcon();
    return icons_.icon(QString::fromStdString(identity->icon),
                       QString::fromStdString(identity->executable), name);
}

QIcon DesktopWorkspace::genericApplicationIcon() const {
    const ImageWarningFilter foreign;
    QIcon themed = QIcon::fromTheme(QStringLiteral("application-x-executable"));
    // A theme may name a file that is damaged or of a format without a reader.
    if (!themed.pixmap(trialSize).isNull())
        return themed;
    if (bundledApplicationIcon_.isNull())
        bundledApplicationIcon_ = platform::bundleIcon(QStringLiteral("Executable.icns"));
    return bundledApplicationIcon_;
}

void DesktopWorkspace::setTileColors(const TileColors& colors) {
    icons_.setTileColors(colors);
    tellRunningApplications();
}

QString DesktopWorkspace::whyNamed(const ProgramReference& program) const {
    const ApplicationIdentity* const identity = findOrAsk(program);
    return identity != nullptr ? Texts::tr(describe(identity->evidence)) : QString();
}

/// A burst of questions is one piece of work.
void DesktopWorkspace::askAbout(const ProgramReference& program) const {
    const auto isIt = [&](const ProgramReference& each) { return each.name == program.name; };
    if (std::ranges::any_of(asked_, isIt) || std::ranges::any_of(underway_, isIt))
        return;
    asked_.push_back(program);
    if (underway_.empty())
        asking_.start(0ms);
}

void DesktopWorkspace::identifyAsked() {
    underway_ = std::exchange(asked_, {});
    inBackground(
        [asked = underway_](ApplicationScan& scan) {
            Identities identities;
            for (const ProgramReference& each : asked)
                identities.push_back(scan.identify(static_cast<pid_t>(each.pid),
                                                   each.name.toStdString(),
                                                   each.path.toStdString()));
            return identities;
        },
        &DesktopWorkspace::takeIdentified);
}

void DesktopWorkspace::takeIdentified(const Identities& identified) {
    if (identified_.size() >= mostIdentified)
        identified_.clear();
    for (std::size_t i = 0; i < identified.size(); ++i)
        identified_.insert(underway_[i].name, {underway_[i].pid, identified[i]});
    underway_.clear();
    if (!asked_.empty())
        asking_.start(0ms);
    tellRunningApplications();
}

void DesktopWorkspace::inBackground(std::function<Identities(ApplicationScan&)> work,
                                    TakeAnswer answer) {
    queue_->async([scan = scan_, self = self_, work = std::move(work), answer] {
        platform::DispatchQueue::main()->async([self, answer, result = work(*scan)] {
            if (*self != nullptr)
                ((*self)->*answer)(result);
        });
    });
}
