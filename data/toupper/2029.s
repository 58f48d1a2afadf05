# The upper case of GEORGIAN-PS.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as GEORGIAN-PS.
# These stay as they are, since the set does not have their upper case:
# \x83 \xB5 \xC0 \xC1 \xC2 \xC3 \xC4 \xC5 \xC6 \xC7 \xC8 \xC9 \xCA
# \xCB \xCC \xCD \xCE \xCF \xD0 \xD1 \xD2 \xD3 \xD4 \xD5 \xD6 \xD7
# \xD8 \xD9 \xDA \xDB \xDC \xDD \xDE \xDF \xE0 \xE1 \xE2 \xE3 \xE4
# \xE5 \xE6 \xE7 \xE8 \xE9 \xEA \xEB \xEC \xED \xEE \xEF \xF0 \xF1
# \xF2 \xF3 \xF4 \xF5 \xF6 \xF8 \xF9 \xFA \xFB \xFC \xFD \xFE

TOUPPER CHARSET GEORGIAN-PS

a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O p=P q=Q r=R s=S
t=T u=U v=V w=W x=X y=Y z=Z \x9A=\x8A \x9C=\x8C \xFF=\x9F
