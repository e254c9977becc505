#ifndef SONOLET_SERVICE_ACCOUNTS_LIST_SCHEMA_H
#define SONOLET_SERVICE_ACCOUNTS_LIST_SCHEMA_H

namespace sonolet::service {

// The tables of the lists, made after those of the accounts. Every account has one list of each
// kind but `playlist` from the start; stars become entries of the starred lists.
extern const char listSchema[];

}  // namespace sonolet::service

#endif
