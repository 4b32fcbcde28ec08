package world

import (
	"crypto/ecdsa"
	"crypto/elliptic"
	"crypto/rand"
	"crypto/tls"
	"crypto/x509"
	"io"
	"log"
	"math/big"
	"net/http"
	"net/http/httptest"
	"sync"
	"time"
)

// CoverName is the server name that the REALITY server accepts: the TLS site that stands behind it.
const CoverName = "www.site.example"

// CoverSite is that site; a client that the server does not take for its own ends here.
type CoverSite struct {
	server *httptest.Server
	mutex  sync.Mutex
	names  map[string]int // server names of the TLS greetings
}

func startCoverSite() (*CoverSite, error) {
	certificate, err := selfSigned(CoverName)
	if err != nil {
		return nil, err
	}
	site := &CoverSite{names: map[string]int{}}
	site.server = httptest.NewUnstartedServer(http.HandlerFunc(func(answer http.ResponseWriter, _ *http.Request) {
		io.WriteString(answer, "The site behind the server.")
	}))
	site.server.Config.ErrorLog = log.New(io.Discard, "", 0) // every wrong client is one error
	site.server.TLS = &tls.Config{
		NextProtos: []string{"h2", "http/1.1"},
		GetCertificate: func(hello *tls.ClientHelloInfo) (*tls.Certificate, error) {
			site.mutex.Lock()
			site.names[hello.ServerName]++
			site.mutex.Unlock()
			return certificate, nil
		},
	}
	site.server.StartTLS()
	return site, nil
}

func (s *CoverSite) address() string { return s.server.Listener.Addr().String() }

// Greetings counts the TLS connections that asked for a name.
func (s *CoverSite) Greetings(name string) int {
	s.mutex.Lock()
	defer s.mutex.Unlock()
	return s.names[name]
}

func selfSigned(name string) (*tls.Certificate, error) {
	key, err := ecdsa.GenerateKey(elliptic.P256(), rand.Reader)
	if err != nil {
		return nil, err
	}
	template := &x509.Certificate{SerialNumber: big.NewInt(1), DNSNames: []string{name},
		NotBefore: time.Now().Add(-time.Hour), NotAfter: time.Now().Add(time.Hour)}
	content, err := x509.CreateCertificate(rand.Reader, template, template, &key.PublicKey, key)
	return &tls.Certificate{Certificate: [][]byte{content}, PrivateKey: key}, err
}
