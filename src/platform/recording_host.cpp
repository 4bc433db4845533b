#include "platform/recording_host.h"

#include <algorithm>
#include <iterator>

#include "platform/image_array.h"
#include "platform/text.h"

namespace vantrel::platform {
namespace {

// Hours of polling in some twenty megabytes; the oldest entries go first.
constexpr std::size_t kLongestJournal = 100'000;

bool matches(const std::string& wanted, const std::string& className) {
    return wanted == "*" || equalIgnoringCase(wanted, className);
}

/// A value as the journal keeps it: of an image only its size, so that no picture outlives its use.
Value asNoted(const Value& value) {
    const auto* image = std::get_if<ImageRef>(&value.held());
    if (image == nullptr || *image == nullptr) return value;
    return ImageRef(
        std::make_shared<ImageArray>((*image)->width(), (*image)->height(), ImageArray::Pixels{}));
}

}  // namespace

class RecordingHost::Recorder {
  public:
    /// Writes the use down; throws, or returns the value to use instead, when a fault says so.
    std::optional<Value> note(JournalEntry entry) {
        auto fault = strike(entry);
        journal_.push_back(std::move(entry));
        if (journal_.size() > kLongestJournal)
            journal_.erase(journal_.begin(), journal_.begin() + kLongestJournal / 2);
        if (!fault) return std::nullopt;
        if (!fault->returns) throw fault->error;
        return fault->returns;
    }

    void inject(MemberFault fault) { faults_.push_back(std::move(fault)); }

    std::vector<JournalEntry> take(const std::string& className) {
        std::vector<JournalEntry> taken;
        const auto rest = std::stable_partition(
            journal_.begin(), journal_.end(),
            [&](const JournalEntry& entry) { return !matches(className, entry.object); });
        std::move(rest, journal_.end(), std::back_inserter(taken));
        journal_.erase(rest, journal_.end());
        return taken;
    }

    void remember(const std::string& className, const ObjectRef& object) {
        auto& objects = objects_[toLower(className)];
        std::erase_if(objects, [](const auto& weak) { return weak.expired(); });
        objects.push_back(object);
    }

    ObjectRef newest(const std::string& className) const {
        const auto found = objects_.find(toLower(className));
        if (found == objects_.end()) return nullptr;
        for (auto weak = found->second.rbegin(); weak != found->second.rend(); ++weak)
            if (auto object = weak->lock()) return object;
        return nullptr;
    }

  private:
    std::optional<MemberFault> strike(const JournalEntry& entry) {
        for (MemberFault& fault : faults_) {
            if (!matches(fault.object, entry.object) || !equalIgnoringCase(fault.member, entry.member))
                continue;
            if (fault.after > 0) {
                --fault.after;
                continue;
            }
            if (fault.times == 0) continue;
            if (fault.times > 0) --fault.times;
            return fault;
        }
        return std::nullopt;
    }

    std::vector<JournalEntry> journal_;
    std::vector<MemberFault> faults_;
    std::map<std::string, std::vector<std::weak_ptr<AutomationObject>>> objects_;  // by lower-case class name
};

class RecordingHost::RecordedObject : public AutomationObject {
  public:
    RecordedObject(ObjectRef inner, std::shared_ptr<Recorder> recorder)
        : inner_(std::move(inner)), recorder_(std::move(recorder)) {
        recorder_->remember(inner_->className(), inner_);
    }

    std::string className() const override { return inner_->className(); }

    Value get(const std::string& member, const Arguments& arguments) override {
        if (auto instead = recorder_->note({className(), "get", member, arguments})) return *instead;
        return wrapped(inner_->get(member, arguments));
    }

    void put(const std::string& member, const Value& value, const Arguments& arguments) override {
        Arguments noted = arguments;
        noted.push_back(asNoted(value));
        if (!recorder_->note({className(), "put", member, std::move(noted)}))
            inner_->put(member, value, arguments);
    }

    Value call(const std::string& member, const Arguments& arguments) override {
        if (auto instead = recorder_->note({className(), "call", member, arguments})) return *instead;
        return wrapped(inner_->call(member, arguments));
    }

  private:
    Value wrapped(const Value& value) const {
        const auto* object = std::get_if<ObjectRef>(&value.held());
        if (object == nullptr || *object == nullptr) return value;
        return ObjectRef(std::make_shared<RecordedObject>(*object, recorder_));
    }

    ObjectRef inner_;
    std::shared_ptr<Recorder> recorder_;
};

RecordingHost::RecordingHost(AutomationHost& inner)
    : inner_(inner), recorder_(std::make_shared<Recorder>()) {}

RecordingHost::~RecordingHost() = default;

ObjectRef RecordingHost::create(const std::string& progId) {
    recorder_->note({progId, "create", "create", {}});
    return std::make_shared<RecordedObject>(inner_.create(progId), recorder_);
}

void RecordingHost::inject(MemberFault fault) { recorder_->inject(std::move(fault)); }

std::vector<JournalEntry> RecordingHost::takeJournal(const std::string& className) {
    return recorder_->take(className);
}

ObjectRef RecordingHost::newest(const std::string& className) const { return recorder_->newest(className); }

}  // namespace vantrel::platform
