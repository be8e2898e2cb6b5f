// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_GENTRA_H
#define GENTRA_GENTRA_H

/// The whole library.

#include "gentra/gentra_version.h"

#include "gentra/util/Event.h"
#include "gentra/util/EventListener.h"
#include "gentra/util/EventManager.h"
#include "gentra/util/EventType.h"
#include "gentra/util/GlobalEventManager.h"
#include "gentra/util/GlobalMessageManager.h"
#include "gentra/util/LoadTimeStatics.h"
#include "gentra/util/MessageManager.h"
#include "gentra/util/NoInline.h"
#include "gentra/util/PerformanceProfiler.h"
#include "gentra/util/PerformanceStatistics.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/ShortID.h"
#include "gentra/util/String.h"
#include "gentra/util/Timer.h"
#include "gentra/util/Vec3.h"
#include "gentra/util/WeakPtr.h"

#include "gentra/properties/Basic_Parameter.h"
#include "gentra/properties/BehaviourProperty.h"
#include "gentra/properties/DataReferenceProperty.h"
#include "gentra/properties/Datum.h"
#include "gentra/properties/FixedSizeDataProperty.h"
#include "gentra/properties/InstanceCreationFunctor.h"
#include "gentra/properties/Member.h"
#include "gentra/properties/MemberSelection.h"
#include "gentra/properties/MemberSelectionProperty.h"
#include "gentra/properties/Parameter.h"
#include "gentra/properties/Property.h"
#include "gentra/properties/PropertyFactory.h"
#include "gentra/properties/PropertyOwner.h"
#include "gentra/properties/PropertyType.h"
#include "gentra/properties/Scope.h"
#include "gentra/properties/TextProperty.h"
#include "gentra/properties/ValueProperty.h"
#include "gentra/properties/VectorProperty.h"

#include "gentra/pools/Context.h"
#include "gentra/pools/ContextManager.h"
#include "gentra/pools/MemberPool.h"
#include "gentra/pools/Path.h"
#include "gentra/pools/PropertyReference.h"

#include "gentra/behaviours/Behaviour.h"
#include "gentra/behaviours/BehaviourFactory.h"
#include "gentra/behaviours/PlugIn.h"

#include "gentra/spatial/BoundingRect.h"
#include "gentra/spatial/GridOrganizer.h"
#include "gentra/spatial/SpatialOrganizer.h"
#include "gentra/spatial/SpatialRelations.h"

#endif
