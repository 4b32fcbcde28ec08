package world

import (
	"crypto/sha256"
	"encoding/hex"
	"io"
	"math/rand/v2"
	"net"
	"net/http"
	"sync"
)

// LargeSize is the length of the body at /large, and Page is the body at every other path.
const (
	LargeSize = 256 << 20
	Page      = "<!doctype html><title>A site</title><p>The whole page."
)

// Sites are web sites on port 80 of several addresses that remember who asked for what.
type Sites struct {
	mutex    sync.Mutex
	visits   map[string]Visit
	accepted map[string]int
}

// Visit is one request as the site saw it.
type Visit struct {
	From string // address of the client
	At   string // address of the site
	Host string // the name that was asked for
}

func startSites(addresses ...string) (*Sites, error) {
	sites := &Sites{visits: map[string]Visit{}, accepted: map[string]int{}}
	for _, address := range addresses {
		listener, err := net.Listen("tcp", net.JoinHostPort(address, "80"))
		if err != nil {
			return nil, err
		}
		server := &http.Server{Handler: sites, ConnState: func(connection net.Conn, state http.ConnState) {
			if state == http.StateNew {
				sites.count(hostOf(connection.LocalAddr()))
			}
		}}
		go server.Serve(listener)
	}
	return sites, nil
}

func (s *Sites) ServeHTTP(answer http.ResponseWriter, request *http.Request) {
	at := request.Context().Value(http.LocalAddrContextKey).(net.Addr)
	from, _, _ := net.SplitHostPort(request.RemoteAddr)
	s.mutex.Lock()
	s.visits[request.URL.Path] = Visit{From: from, At: hostOf(at), Host: request.Host}
	s.mutex.Unlock()
	if request.URL.Path == "/large" {
		io.Copy(answer, LargeBody())
		return
	}
	io.WriteString(answer, Page)
}

// VisitOf is the last request for a path.
func (s *Sites) VisitOf(path string) (Visit, bool) {
	s.mutex.Lock()
	defer s.mutex.Unlock()
	visit, seen := s.visits[path]
	return visit, seen
}

// Accepted is the number of connections to an address.
func (s *Sites) Accepted(address string) int {
	s.mutex.Lock()
	defer s.mutex.Unlock()
	return s.accepted[address]
}

func (s *Sites) count(address string) {
	s.mutex.Lock()
	defer s.mutex.Unlock()
	s.accepted[address]++
}

// LargeBody gives the same bytes each time, which look random.
func LargeBody() io.Reader {
	return io.LimitReader(rand.NewChaCha8([32]byte{1}), LargeSize)
}

// HashOf reads to the end.
func HashOf(body io.Reader) (string, int64, error) {
	hash := sha256.New()
	length, err := io.Copy(hash, body)
	return hex.EncodeToString(hash.Sum(nil)), length, err
}

func hostOf(address net.Addr) string {
	host, _, _ := net.SplitHostPort(address.String())
	return host
}
