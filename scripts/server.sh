# Sourced after setup.sh: a web server of this machine for published releases, on free loopback ports, with http and with
# https under a certificate authority that is made for the occasion.
#
#   start_server FOLDER WORK [RATE [SLOW]]   serves FOLDER; WORK holds what the server needs and writes. RATE, such as
#                                     500k, limits the bytes of a chunk that are sent in a second; of those only whose
#                                     names match the regular expression SLOW, where it is given.
#                                     Sets $http_url, $https_url (no "/" at the end), $ca_file and $access_log, whose lines
#                                     are "METHOD PATH STATUS BYTES".
#                                     What is asked below "/moved/" is redirected to its place, with http.
#   stop_server WORK                  ends it; waits until it is gone.

# Debian keeps nginx where only root looks.
nginx_program() { PATH=$PATH:/usr/sbin:/sbin command -v nginx || fail "nginx is not installed"; }

make_certificates() {
    local work=$1
    {
        openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=Throwaway authority" \
            -keyout "$work/ca.key" -out "$work/ca.pem"
        openssl req -newkey rsa:2048 -nodes -subj "/CN=localhost" -keyout "$work/server.key" -out "$work/server.csr"
        openssl x509 -req -in "$work/server.csr" -CA "$work/ca.pem" -CAkey "$work/ca.key" -set_serial 2 -days 2 \
            -extfile <(printf 'subjectAltName=DNS:localhost,IP:127.0.0.1\n') -out "$work/server.pem"
    } >"$work/openssl.log" 2>&1 || { tail -n 20 "$work/openssl.log" >&2; fail "the certificates cannot be made"; }
}

write_server_configuration() {
    local folder=$1 work=$2 rate=$3 http=$4 https=$5 slow=$6 user= rates= limit=
    # A server that root starts would serve as a user who may not read the scratch directory.
    [ "$(id -u)" -ne 0 ] || user="user root;"
    if [ -n "$rate" ]; then
        rates="map \$uri \$chunk_rate { default 0; \"~/(${slow:-.*[.]vochk})\$\" $rate; }"
        limit="limit_rate \$chunk_rate; limit_rate_after 600;" # the headers of an answer count as well
    fi
    cat >"$work/nginx.conf" <<END
$user
worker_processes 1;
pid "$work/nginx.pid";
error_log "$work/error.log";
events { worker_connections 256; }
http {
    log_format plain '\$request_method \$uri \$status \$body_bytes_sent';
    access_log "$work/access.log" plain;
    client_body_temp_path "$work/body";
    proxy_temp_path "$work/proxy";
    fastcgi_temp_path "$work/fastcgi";
    uwsgi_temp_path "$work/uwsgi";
    scgi_temp_path "$work/scgi";
    default_type application/octet-stream;
    sendfile on;
    $rates
    server {
        listen 127.0.0.1:$http;
        listen 127.0.0.1:$https ssl;
        ssl_certificate "$work/server.pem";
        ssl_certificate_key "$work/server.key";
        root "$folder";
        location /moved/ { rewrite ^/moved/(.*) http://127.0.0.1:$http/\$1 redirect; }
        $limit
    }
}
END
}

start_server() {
    local folder=$1 work=$2 rate=${3:-} slow=${4:-} program attempt http https
    program=$(nginx_program)
    mkdir -p "$work"
    [ -f "$work/server.pem" ] || make_certificates "$work"
    for attempt in $(seq 20); do
        http=$((20000 + RANDOM)) https=$((53000 + RANDOM % 8000))
        write_server_configuration "$folder" "$work" "$rate" "$http" "$https" "$slow"
        # It ends at once when a port is taken.
        if "$program" -p "$work" -e "$work/error.log" -c "$work/nginx.conf" 2>"$work/start.log"; then
            http_url=http://127.0.0.1:$http https_url=https://127.0.0.1:$https
            ca_file=$work/ca.pem access_log=$work/access.log
            return 0
        fi
        grep -q 'Address already in use' "$work/start.log" "$work/error.log" 2>/dev/null || break
    done
    cat "$work/start.log" >&2
    fail "nginx did not start (attempt $attempt)"
}

stop_server() {
    local pid
    pid=$(cat "$1/nginx.pid" 2>/dev/null) || return 0
    kill "$pid" 2>/dev/null || return 0
    for _ in $(seq 100); do
        kill -0 "$pid" 2>/dev/null || return 0
        sleep 0.05
    done
    kill -KILL "$pid" 2>/dev/null || true
}
