// geodata DIRECTORY writes a geoip.dat and a geosite.dat that hold the four lists which the product's
// configuration names, with a few entries each.
package main

import (
	"log"
	"net/netip"
	"os"
	"path/filepath"

	"github.com/xtls/xray-core/app/router"
	"google.golang.org/protobuf/proto"

	"tavrin.example/real/core/world"
)

func main() {
	if len(os.Args) != 2 {
		log.Fatal("usage: geodata DIRECTORY")
	}
	write("geoip.dat", &router.GeoIPList{Entry: []*router.GeoIP{
		addresses("CN", world.CnNetwork),
		addresses("PRIVATE", "10.0.0.0/8", "127.0.0.0/8", "172.16.0.0/12", "192.168.0.0/16", "fc00::/7"),
	}})
	write("geosite.dat", &router.GeoSiteList{Entry: []*router.GeoSite{
		names("CN", world.CnName),
		names("GOOGLE", world.GoogleName),
	}})
}

func addresses(code string, prefixes ...string) *router.GeoIP {
	list := &router.GeoIP{CountryCode: code}
	for _, text := range prefixes {
		prefix := netip.MustParsePrefix(text)
		list.Cidr = append(list.Cidr, &router.CIDR{Ip: prefix.Addr().AsSlice(), Prefix: uint32(prefix.Bits())})
	}
	return list
}

func names(code string, domains ...string) *router.GeoSite {
	list := &router.GeoSite{CountryCode: code}
	for _, domain := range domains {
		list.Domain = append(list.Domain, &router.Domain{Type: router.Domain_Domain, Value: domain})
	}
	return list
}

func write(name string, list proto.Message) {
	content, err := proto.Marshal(list)
	if err == nil {
		err = os.WriteFile(filepath.Join(os.Args[1], name), content, 0o644)
	}
	if err != nil {
		log.Fatal(err)
	}
}
