// What the framework looks up in the shared library by plain name. The framework owns and deletes what they return.
// The first base of each object is the framework's own class, at the same address: a loader that knows nothing else of
// the library takes the three results as Service*, Invoker* and Proxy*.
#pragma once

class CommunicationsService;
class CommunicationsServiceEventProxy;
class CommunicationsServiceInvoker;

extern "C" {
// A new service, not yet initialised.
CommunicationsService* createCommunicationsService();
// A new invoker, not yet bound to a context.
CommunicationsServiceInvoker* createCommunicationsServiceInvoker();
// A new proxy, not yet bound to a request.
CommunicationsServiceEventProxy* createCommunicationsServiceEventProxy();
}
