/// @file
/// What the framework looks up in the shared library by plain name.
///
/// The framework owns and deletes what the factories return. The first base of each object is the framework's own
/// class, at the same address: a loader that knows nothing else of the library takes the three results as `Service*`,
/// `Invoker*` and `Proxy*`. Thread: any.
#pragma once

class CommunicationsService;
class CommunicationsServiceEventProxy;
class CommunicationsServiceInvoker;

extern "C" {
/// Makes a new service, not yet initialised.
/// @return Never null; throws std::bad_alloc.
CommunicationsService* createCommunicationsService();
/// Makes a new invoker, not yet bound to a context.
/// @return Never null; throws std::bad_alloc.
CommunicationsServiceInvoker* createCommunicationsServiceInvoker();
/// Makes a new proxy, not yet bound to a request.
/// @return Never null; throws std::bad_alloc.
CommunicationsServiceEventProxy* createCommunicationsServiceEventProxy();
}
