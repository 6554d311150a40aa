#include <devicestack/KnxdDeviceStackClient.h>

#include <devicestack/detail/KnxdWorker.h>
#include <devicestack/detail/KnxdWorkerSupport.h>

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace Lumo
{
KnxdDeviceStackClient::KnxdDeviceStackClient(std::string url, std::vector<DeviceObject> objects)
    : KnxdDeviceStackClient(std::move(url), std::move(objects), Settings())
{
}

namespace
{
std::vector<DeviceObject> UsableObjects(std::vector<DeviceObject> objects)
{
    std::vector<DeviceObject> usable;
    for (DeviceObject& object : objects)
    {
        bool known = false;
        for (const DeviceObject& other : usable)
        {
            known = known || other.co == object.co;
        }
        if (!known && !object.groupAddresses.empty() && ObjectValueId(object.co) != 0)
        {
            usable.push_back(std::move(object));
        }
    }
    return usable;
}
} // namespace

KnxdDeviceStackClient::KnxdDeviceStackClient(std::string url, std::vector<DeviceObject> objects, Settings settings)
    : objects_(UsableObjects(std::move(objects))), url_(std::move(url)), settings_(settings),
      values_(objects_.size())
{
    for (std::size_t index = 0; index < objects_.size(); ++index)
    {
        byId_[ObjectValueId(objects_[index].co)] = index;
    }
    wakeDescriptor_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeDescriptor_ < 0)
    {
        throw std::system_error(errno, std::generic_category(), "KnxdDeviceStackClient: eventfd");
    }
    worker_.reset(new Worker(*this));
    // Once here, so that a reachable knxd is connected when the constructor returns.
    worker_->Connect(Worker::Clock::now());
    thread_ = std::thread([this] { worker_->Run(); });
}

KnxdDeviceStackClient::~KnxdDeviceStackClient()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    const std::uint64_t one = 1;
    (void)!write(wakeDescriptor_, &one, sizeof one);
    thread_.join();
    worker_.reset();
    close(wakeDescriptor_);
}

const DeviceObject* KnxdDeviceStackClient::FindObject(unsigned long id) const
{
    const auto found = byId_.find(id);
    return found == byId_.end() ? nullptr : &objects_[found->second];
}

bool KnxdDeviceStackClient::WaitConnected(std::chrono::milliseconds limit) const
{
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, limit, [this] { return connected_.load(); });
}

void KnxdDeviceStackClient::SetChangeObserver(ChangeObserver observer)
{
    std::lock_guard<std::mutex> lock(mutex_);
    observer_ = std::move(observer);
}

bool KnxdDeviceStackClient::SetInternalValueFormat(bool enable)
{
    internalFormat_.store(enable);
    return true;
}

bool KnxdDeviceStackClient::SetConfiguration(unsigned long, const PropertyMap&, bool)
{
    return false;
}

bool KnxdDeviceStackClient::GetDeviceConfig(std::string& configuration, bool)
{
    std::vector<OKAVALUE> values;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        values = values_;
    }
    configuration = DeviceConfigJson(url_, connected_.load(), objects_, values, internalFormat_.load());
    return true;
}

bool KnxdDeviceStackClient::SetDeviceConfig(const std::map<std::string, std::string>&)
{
    return false;
}

bool KnxdDeviceStackClient::SetValueFormat(const std::string&)
{
    return false;
}

std::string KnxdDeviceStackClient::Queue(int kind, unsigned long id, std::string text)
{
    std::unique_ptr<Job> job(new Job);
    job->kind = static_cast<Job::Kind>(kind);
    job->id = id;
    job->text = std::move(text);
    std::string requestId;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        job->requestId = "knxd-" + std::to_string(++lastRequest_);
        requestId = job->requestId;
        jobs_.push_back(std::move(job));
    }
    const std::uint64_t one = 1;
    (void)!write(wakeDescriptor_, &one, sizeof one);
    return requestId;
}

std::string KnxdDeviceStackClient::RequestAsync(const std::string& request)
{
    return Queue(Job::Request, 0, request);
}

std::string KnxdDeviceStackClient::RegisterApplicationAsync(const std::string&, const std::string&, const std::string&)
{
    return Queue(Job::RegisterApplication, 0, std::string());
}

std::string KnxdDeviceStackClient::SetConfigurationAsync(const std::string& configuration)
{
    return Queue(Job::SetConfiguration, 0, configuration);
}

std::string KnxdDeviceStackClient::GetValueAsync(unsigned long id, bool)
{
    return Queue(Job::GetValue, id, std::string());
}

std::string KnxdDeviceStackClient::SetValueAsync(unsigned long id, const std::string& serializedValue, bool, int)
{
    return Queue(Job::SetValue, id, serializedValue);
}

void KnxdDeviceStackClient::SetResponseHandler(IResponseHandler* handler, int)
{
    std::unique_lock<std::mutex> lock(mutex_);
    handler_ = handler;
    if (std::this_thread::get_id() != thread_.get_id())
    {
        changed_.wait(lock, [this] { return !delivering_; });
    }
}
} // namespace Lumo
