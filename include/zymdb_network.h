/**
 * Network ports of the host: how many ports a PCI function has, its logical and physical ports, and the
 * state of their links.
 *
 * The conventions at the top of zymdb_db.h hold; its convention 6 explains the keys. The library copies
 * sizes, speeds and utilisations as they are stored; the units stated here are those in which this project's
 * collector writes them.
 */
#ifndef ZYMDB_NETWORK_H
#define ZYMDB_NETWORK_H

#include <stdint.h>

#include "zymdb_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/** States of a link: LinkStatus. */
typedef enum _ZYMDB_LinkStatus {
  ZYMDB_LINK_UNKNOWN = 0, /**< not known */
  ZYMDB_LINK_UP = 1,      /**< there is a link */
  ZYMDB_LINK_DOWN = 2     /**< there is none */
} _ZYMDB_LinkStatus;

/* ---- Port counts and logical ports --------------------------------------------------------------- */

/** How many ports a function has: the sums over its rows of PCINetwork. */
struct _ZYMDB_PCI_Network_Info {
  uint8_t NumberofPhysicalPorts;    /**< low 8 bits of the sum; 0 when unreadable */
  uint16_t MaxNumberofLogicalPorts; /**< low 16 bits of the sum; 0 when unreadable */
};
typedef struct _ZYMDB_PCI_Network_Info _ZYMDB_PCI_Network_Info;

/**
 * A logical port (a partition, virtual NIC or storage endpoint): a row of PCILogicalPort, each field from the
 * column of its name. Unreadable numbers are 0 where no other default is stated, unreadable texts empty.
 */
struct _ZYMDB_PCI_LogicalPort {
  uint32_t MaxDataSize;              /**< largest frame payload, bytes */
  char PermanentAddress[65];         /**< burnt-in address; at least 12 characters */
  char NetworkAddresses[65];         /**< current address or addresses */
  uint16_t PhyIdx;                   /**< index of the physical port that carries this one */
  uint16_t Idx;                      /**< index of the logical port */
  uint16_t LinkTechnology;           /**< 2 Ethernet, 3 InfiniBand, 4 Fibre Channel; a number in text */
  uint8_t vNICMode;                  /**< virtual NIC mode, 0 to 3; 4 when unreadable; a number in text */
  uint64_t MaxSpeed;                 /**< highest speed, bit/s */
  uint16_t ProtocolType;             /**< interface type number: 6, 56 or 199 */
  uint8_t Ethernet;                  /**< 1: has an Ethernet function */
  uint8_t FCoEFC;                    /**< 1: has a Fibre Channel function, over Ethernet or of its own */
  uint8_t iSCSI;                     /**< 1: has an iSCSI function */
  char FCoEPermanentAddress[17];     /**< burnt-in Fibre Channel address */
  char FCoENetworkAddressess[17];    /**< current Fibre Channel address; so spelt in the database */
  uint16_t ConnectionType;           /**< storage connection, 2 to 9; a number in text */
  uint16_t Role;                     /**< storage role, 2 to 4; a number in text */
  uint32_t TargetRelativePortNumber; /**< number of the port among its target's */
  char LinkTechnologyName[65];       /**< text of LinkTechnology */
  char vNICModeName[65];             /**< text of vNICMode */
  char ProtocolTypeName[65];         /**< text of ProtocolType */
  char ConnectionTypeName[65];       /**< text of ConnectionType */
  char RoleName[65];                 /**< text of Role */
};
typedef struct _ZYMDB_PCI_LogicalPort _ZYMDB_PCI_LogicalPort;

/** Logical ports. */
struct _ZYMDB_PCI_LogicalPort_List {
  uint32_t count;                /**< ports in `ports` */
  _ZYMDB_PCI_LogicalPort* ports; /**< the caller frees it */
};
typedef struct _ZYMDB_PCI_LogicalPort_List _ZYMDB_PCI_LogicalPort_List;

/**
 * Reads how many ports a function has.
 *
 * @param funKey  function key of the function.
 * @param info    filled when the status is 0 (a function without rows has 0 ports); untouched otherwise, and
 *                when the client's query succeeds without a result.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `info` is null
 *         - a status of the client's query
 *         - the step's code when it yields no row
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_network_info(unsigned int funKey, _ZYMDB_PCI_Network_Info* info);

/**
 * Lists the logical ports of one function.
 *
 * Left out are ports whose permanent address is unreadable or shorter than 12 characters.
 *
 * @param funKey  function key of the function.
 * @param list    emptied once the arguments are accepted, filled on success.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query; 0, with an empty list, when it gives no result
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the code of the last step: ZYM_DB_STATUS_DONE (10) when there are no logical ports
 *         - ZYM_DB_STATUS_OK (0): at least one port is listed
 */
int zymdb_get_network_logical_port_list(unsigned int funKey, _ZYMDB_PCI_LogicalPort_List* list);

/**
 * Lists the logical ports of one function that one physical port carries, as
 * zymdb_get_network_logical_port_list does all of them.
 *
 * @param funKey  function key of the function.
 * @param phyIdx  index of the physical port; 255 for any.
 * @param list    as there.
 * @return as zymdb_get_network_logical_port_list.
 */
int zymdb_get_network_logical_port_list2(unsigned int funKey, unsigned int phyIdx,
                                         _ZYMDB_PCI_LogicalPort_List* list);

/**
 * Lists the logical ports of all functions of one adapter, as zymdb_get_network_logical_port_list does those
 * of one.
 *
 * @param pciKey  PCI key of the adapter.
 * @param list    as there.
 * @return as zymdb_get_network_logical_port_list.
 */
int zymdb_get_all_network_logical_port_list(unsigned int pciKey, _ZYMDB_PCI_LogicalPort_List* list);

/* ---- Physical ports and their links -------------------------------------------------------------- */

/**
 * A physical port: a row of PCIPhysicalPort, and its state from PCIPhysicalPortStat. Unreadable numbers are
 * 0, unreadable texts empty.
 */
struct _ZYMDB_PCI_PhysicalPort {
  uint16_t ConnectorLayout;      /**< connector code; a number in text */
  uint16_t Idx;                  /**< index of the port within its function */
  uint16_t NumberofLogicalPorts; /**< logical ports that it carries */
  char PermanentAddress[65];     /**< burnt-in address */
  char ConnectorLayoutName[65];  /**< text of ConnectorLayout */
  uint32_t LinkStatus;           /**< a _ZYMDB_LinkStatus */
  uint32_t LinkSpeed;            /**< Mbit/s; 0 when there is no link or it is not known */
  uint32_t TxUtil;               /**< share of the link in use for sending, percent */
  uint32_t RxUtil;               /**< and for receiving */
};
typedef struct _ZYMDB_PCI_PhysicalPort _ZYMDB_PCI_PhysicalPort;

/** Physical ports. */
struct _ZYMDB_PCI_PhysicalPort_List {
  uint32_t count;                 /**< ports in `ports` */
  _ZYMDB_PCI_PhysicalPort* ports; /**< the caller frees it */
};
typedef struct _ZYMDB_PCI_PhysicalPort_List _ZYMDB_PCI_PhysicalPort_List;

/** The state of one physical port's link: a row of PCIPhysicalPortStat. Unreadable numbers are 0. */
struct _ZYMDB_PCI_PortLinkState {
  uint32_t LinkStatus; /**< a _ZYMDB_LinkStatus */
  uint32_t LinkSpeed;  /**< Mbit/s; 0 when there is no link or it is not known */
  uint32_t TxUtil;     /**< share of the link in use for sending, percent */
  uint32_t RxUtil;     /**< and for receiving */
  uint16_t Idx;        /**< index of the port that was read; a write does not look at it */
};
typedef struct _ZYMDB_PCI_PortLinkState _ZYMDB_PCI_PortLinkState;

/**
 * Lists the physical ports of one function with the state of their links.
 *
 * Never lists more ports than the function's rows of PCINetwork sum up to. States join ports by position, not
 * by index: both tables hold a function's rows in the same order and in equal number. Ports beyond the last
 * state have state 0.
 *
 * @param funKey  function key of the function.
 * @param list    emptied once the arguments are accepted, filled on success.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query for the functions; 0, with an empty list, when it gives no result
 *         - ZYM_DB_STATUS_NOT_FOUND (11): the functions' ports sum up to 0
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - for each function: a status of the client's query for ports, of a step through them but
 *           ZYM_DB_STATUS_DONE, or of the query for states; 0, with an empty list, when one of the queries
 *           gives no result
 *         - ZYM_DB_STATUS_OK (0): also when a step through functions or states fails; what was read counts
 */
int zymdb_get_network_physical_port_list(unsigned int funKey, _ZYMDB_PCI_PhysicalPort_List* list);

/**
 * Lists the physical ports of all functions of one adapter, as zymdb_get_network_physical_port_list does
 * those of one. Only the adapter's first 14 rows of PCINetwork count.
 *
 * @param pciKey  PCI key of the adapter.
 * @param list    as there.
 * @return as zymdb_get_network_physical_port_list.
 */
int zymdb_get_all_network_physical_port_list(unsigned int pciKey, _ZYMDB_PCI_PhysicalPort_List* list);

/**
 * Reads the state of one physical port's link. States whose index cannot be read are passed over.
 *
 * @param funKey     function key of the function.
 * @param state      must not be null; untouched unless the port was found.
 * @param portIndex  index of the port; -1 for the function's only one.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - a status of the client's query; 0 when it gives no result
 *         - ZYM_DB_STATUS_NOT_FOUND (11): `portIndex` is -1 and the function has not exactly one state
 *           (logged), or no state has this index (each other one's index is logged)
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_network_physical_port_link_state(unsigned int funKey, _ZYMDB_PCI_PortLinkState* state,
                                               int portIndex);

/**
 * Writes the state of one physical port's link. Creates no row, and writes even what has not changed.
 *
 * @param funKey     function key of the function.
 * @param state      must not be null; `Idx` is not used.
 * @param portIndex  index of the port; -1 for the function's only one.
 * @return checked in this order:
 *         - any status but 0 of zymdb_get_network_physical_port_link_state for the same port
 *         - ZYM_DB_STATUS_NO_MEMORY (4): logged
 *         - the status of the client's update, logged when not 0
 */
int zymdb_set_network_physical_port_link_state(unsigned int funKey, const _ZYMDB_PCI_PortLinkState* state,
                                               int portIndex);

#ifdef __cplusplus
}
#endif

#endif
