# Two releases' files: from the first to the second one is added, one changed, one removed, one moved.
mkdir -p one/sub
seq 2000 >one/long.txt
echo b >one/sub/b
echo c >one/c
echo same >one/same
cp -r one two
echo new >two/added
echo changed >>two/c
rm -r two/sub
mv two/long.txt two/moved.txt
mkdir two/deep && mv two/same two/deep/same && cp two/deep/same two/same

# Publishes them.
publish_both()
{
    for release in 1.0.0=one 1.1.0=two; do
        vo publish ${release#*=} --to pub/declarations.xml --name Examples --release ${release%=*} -q >publication || cat publication
    done
    rm publication
}

# The folder of the newest release.
newest() { echo pub/packages/*/1.1.0.0; }
