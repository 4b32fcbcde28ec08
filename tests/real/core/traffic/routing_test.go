package traffic

import (
	"net"
	"net/http"
	"testing"

	"tavrin.example/real/core/world"
)

func TestEachDestinationTakesItsRoute(t *testing.T) {
	connect(t)
	const node = world.NodeAddress
	cases := []struct{ name, host, at, from string }{
		{"a name of the GOOGLE list", world.GoogleName, world.PublicSite, node},
		{"a name below one of that list", "www." + world.GoogleName, world.PublicSite, node},
		{"a listed service", "search.example", world.PublicSite, node},
		{"a name of no list", "plain-site.example", world.PublicSite, node},
		{"an address of no list", world.PublicSite, world.PublicSite, node},
		{"a name of the CN list", world.CnName, world.CnSite, world.CnSite},
		{"an address of the CN list", world.CnSite, world.CnSite, world.CnSite},
		{"the panel", "panel.example", world.CnSite, world.CnSite},
		{"a private address", world.PrivateSite, world.PrivateSite, world.PrivateSite},
	}
	for _, c := range cases {
		t.Run(c.name, func(t *testing.T) {
			path := "/route/" + c.host
			if err := world.GetPage("http://" + c.host + path); err != nil {
				t.Error(err)
			}
			want := world.Visit{From: c.from, At: c.at, Host: c.host}
			if visit, _ := everything.Sites.VisitOf(path); visit != want {
				t.Errorf("the site saw %+v instead of %+v", visit, want)
			}
		})
	}
}

func TestBlockedDestinationsSeeNobody(t *testing.T) {
	connect(t)
	for _, c := range []struct{ name, address string }{
		{"IPv6", world.Ipv6Site},
		{"link-local", world.LinkLocalSite},
	} {
		t.Run(c.name, func(t *testing.T) {
			expectReachable(t, c.address)
			before := everything.Sites.Accepted(c.address)
			if answer, err := world.Get("http://" + net.JoinHostPort(c.address, "80") + "/"); err == nil {
				t.Errorf("an answer: %s", answer.Status)
			}
			if now := everything.Sites.Accepted(c.address); now != before {
				t.Errorf("the site took %d connections", now-before)
			}
		})
	}
}

// expectReachable asks without the core: it is the core that keeps the others off.
func expectReachable(t *testing.T, address string) {
	t.Helper()
	straight := http.Client{Transport: &http.Transport{DisableKeepAlives: true}}
	answer, err := straight.Get("http://" + net.JoinHostPort(address, "80") + "/straight")
	if err != nil {
		t.Fatal(err)
	}
	answer.Body.Close()
}
