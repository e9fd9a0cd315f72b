// IServiceObject: what a service runner runs.
#pragma once

class IService;
class LauncherException;

class IServiceObject {
public:
    virtual void printStartupHeader(IService& service) = 0;
    /// The whole life of the application; gives the exit base. Main thread.
    virtual int run(IService& service) = 0;
    /// Asks the application to stop and waits until its start method is done.
    virtual void stop(IService& service) = 0;
    /// Takes note of a failure that ends the service.
    virtual void exceptionHandler(const LauncherException& exception) = 0;
    virtual ~IServiceObject() = default;
};
