# The upper case of MACINTOSH.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as MACINTOSH.
# These stay as they are, since the set does not have their upper case:
# \xA7 \xB5 \xB9 \xC4 \xDE \xDF

TOUPPER CHARSET MACINTOSH

a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O p=P q=Q r=R s=S
t=T u=U v=V w=W x=X y=Y z=Z \x87=\xE7 \x88=\xCB \x89=\xE5 \x8A=\x80
\x8B=\xCC \x8C=\x81 \x8D=\x82 \x8E=\x83 \x8F=\xE9 \x90=\xE6 \x91=\xE8
\x92=\xEA \x93=\xED \x94=\xEB \x95=\xEC \x96=\x84 \x97=\xEE \x98=\xF1
\x99=\xEF \x9A=\x85 \x9B=\xCD \x9C=\xF2 \x9D=\xF4 \x9E=\xF3 \x9F=\x86
\xBE=\xAE \xBF=\xAF \xCF=\xCE \xD8=\xD9 \xF5=I
