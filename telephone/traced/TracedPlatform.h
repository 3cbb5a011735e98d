// The platform as the library sees it: each call of an operation that the library finds through a singleton is a step
// of the trace, with its arguments, its result and how long it took. The accessors of the singletons return these
// objects. Any thread.
//
//     CSfi* CSfi::GetInstance()
//     {
//         return telephone::traced<CSfi>(telephone::OnlyObject<telephone::Sfi>::get());
//     }
#pragma once

class CSfi;
class DirectedPickupHandler;
class FeatureToggle;
class LineManager;
class TeamServiceFeatures;
class TeamServiceKeyset;

namespace telephone {

// While something is traced, an object that passes each operation on to the actual one; else the actual one. Null for
// null.
template <typename Interface>
Interface* traced(Interface* actual);

extern template CSfi* traced(CSfi* actual);
extern template DirectedPickupHandler* traced(DirectedPickupHandler* actual);
extern template FeatureToggle* traced(FeatureToggle* actual);
extern template LineManager* traced(LineManager* actual);
extern template TeamServiceFeatures* traced(TeamServiceFeatures* actual);
extern template TeamServiceKeyset* traced(TeamServiceKeyset* actual);

}  // namespace telephone
