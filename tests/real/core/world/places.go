// Package world stands up, on the loopback of a network namespace, what the real core talks to: a
// REALITY server, sites that remember who asked, name servers, and a SOCKS client of its own.
package world

import "net/netip"

// The lists of the geo data.
const (
	CnNetwork  = "101.6.0.0/16"
	CnName     = "cn-site.example"
	GoogleName = "google-site.example"
)

// Who stands where. Every address is put on the loopback, so that a request to a public address ends
// here as well. The sites see a request that came through the node from NodeAddress, and a direct
// one from the address that was asked: the source of a connection to an address of one's own.
const (
	NodeAddress      = "203.0.113.9"
	PublicSite       = "198.51.100.20"
	CnSite           = "101.6.0.1"
	PrivateSite      = "10.7.7.7"
	LinkLocalSite    = "169.254.7.7"
	Ipv6Site         = "2001:db8::20"
	DomesticServer   = "223.5.5.5" // the name server that the configuration names for the CN list
	PublicServer     = "1.1.1.1"   // its name server for everything else
	BystandingServer = "8.8.8.8"   // a name server that an application asks
)

// Address records of the name servers and of the node's own resolver.
var (
	domesticRecords = map[string]string{CnName + ".": CnSite, "panel.example.": CnSite}
	publicRecords   = map[string]string{GoogleName + ".": PublicSite, "plain-site.example.": PublicSite}
	nodeRecords     = map[string]string{
		"domain:" + GoogleName: PublicSite, "search.example": PublicSite, "plain-site.example": PublicSite, CnName: PublicSite,
	}
)

func allAddresses() []netip.Addr {
	var list []netip.Addr
	for _, text := range []string{NodeAddress, PublicSite, CnSite, PrivateSite, LinkLocalSite, Ipv6Site,
		DomesticServer, PublicServer, BystandingServer} {
		list = append(list, netip.MustParseAddr(text))
	}
	return list
}
