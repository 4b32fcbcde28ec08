package world

// Programs says where the built programs and the geo data are.
type Programs struct {
	Core    string
	GeoData string
}

// World is everything that stands on the loopback.
type World struct {
	Programs
	Node       Node
	Sites      *Sites
	Cover      *CoverSite
	Domestic   *Resolver
	Public     *Resolver
	Bystanding *Resolver
	Quic       *Datagrams // port 443 of the public site
	Echo       *Datagrams // another port of it
	server     *Core
}

// EchoPort is a UDP port of the public site that no rule of the configuration names.
const EchoPort = "4443"

// Start takes the namespace's network and starts everything. The directory is the server's.
func Start(programs Programs, directory string) (*World, error) {
	if err := takeNetwork(); err != nil {
		return nil, err
	}
	world := &World{Programs: programs}
	for _, start := range []func() error{world.startSites, world.startResolvers, world.startDatagrams} {
		if err := start(); err != nil {
			return nil, err
		}
	}
	return world, world.startNode(directory)
}

// Stop ends the server; the rest ends with this program.
func (w *World) Stop() { w.server.Stop() }

func (w *World) startSites() (err error) {
	if w.Cover, err = startCoverSite(); err != nil {
		return err
	}
	w.Sites, err = startSites(PublicSite, CnSite, PrivateSite, LinkLocalSite, Ipv6Site)
	return err
}

func (w *World) startResolvers() (err error) {
	if w.Domestic, err = startResolver(DomesticServer, domesticRecords); err != nil {
		return err
	}
	if w.Public, err = startResolver(PublicServer, publicRecords); err != nil {
		return err
	}
	w.Bystanding, err = startResolver(BystandingServer, publicRecords)
	return err
}

func (w *World) startDatagrams() (err error) {
	if w.Quic, err = startDatagrams(PublicSite, "443"); err != nil {
		return err
	}
	w.Echo, err = startDatagrams(PublicSite, EchoPort)
	return err
}

func (w *World) startNode(directory string) (err error) {
	if w.Node, err = newNode(); err != nil {
		return err
	}
	configuration, err := w.Node.serverConfiguration(w.Cover.address())
	if err != nil {
		return err
	}
	w.server, err = StartCore(w.Core, w.GeoData, directory, configuration, nodeEndpoint())
	return err
}
