package world

import (
	"net"
	"sync"

	"golang.org/x/net/dns/dnsmessage"
)

// Resolver is a name server over UDP that answers from a table and remembers the questions.
type Resolver struct {
	mutex   sync.Mutex
	records map[string]string
	asked   map[string]string // the name, and the address that asked last
}

func startResolver(address string, records map[string]string) (*Resolver, error) {
	socket, err := net.ListenPacket("udp", net.JoinHostPort(address, "53"))
	if err != nil {
		return nil, err
	}
	resolver := &Resolver{records: records, asked: map[string]string{}}
	go resolver.serve(socket)
	return resolver, nil
}

// AskerOf is who asked for a name ("google-site.example."), or the empty text.
func (r *Resolver) AskerOf(name string) string {
	r.mutex.Lock()
	defer r.mutex.Unlock()
	return r.asked[name]
}

// Questions is the number of different names that were asked for.
func (r *Resolver) Questions() int {
	r.mutex.Lock()
	defer r.mutex.Unlock()
	return len(r.asked)
}

func (r *Resolver) serve(socket net.PacketConn) {
	buffer := make([]byte, 2048)
	for {
		length, from, err := socket.ReadFrom(buffer)
		if err != nil {
			return
		}
		if answer := r.answer(buffer[:length], hostOf(from)); answer != nil {
			socket.WriteTo(answer, from)
		}
	}
}

func (r *Resolver) answer(query []byte, from string) []byte {
	var message dnsmessage.Message
	if message.Unpack(query) != nil || len(message.Questions) != 1 {
		return nil
	}
	question := message.Questions[0]
	r.mutex.Lock()
	r.asked[question.Name.String()] = from
	address := net.ParseIP(r.records[question.Name.String()]).To4()
	r.mutex.Unlock()
	message.Header.Response = true
	message.Additionals = nil
	switch {
	case address == nil:
		message.Header.RCode = dnsmessage.RCodeNameError
	case question.Type == dnsmessage.TypeA:
		header := dnsmessage.ResourceHeader{Name: question.Name, Class: dnsmessage.ClassINET, TTL: 60}
		message.Answers = []dnsmessage.Resource{{Header: header, Body: &dnsmessage.AResource{A: [4]byte(address)}}}
	}
	answer, _ := message.Pack()
	return answer
}
